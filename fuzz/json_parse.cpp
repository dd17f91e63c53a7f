// Any text through the JSON reader: it must return a tree or null without a fault, a leak or
// a stall, and a tree it returns must print as text that it reads back to the same shape.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "records/json/JSON.h"

namespace {

// Same structure, strings and flags. A number may come back as null: infinity prints as null,
// and a finite number printed with 15 digits can read back as infinity near the top of the
// range.
bool sameShape(const JSONValue& a, const JSONValue& b) {
  if (a.IsNumber() || b.IsNumber()) {
    return (a.IsNumber() || a.IsNull()) && (b.IsNumber() || b.IsNull());
  }
  if (a.Type() != b.Type()) {
    return false;
  }
  switch (a.Type()) {
  case JSONType::String:
    return a.AsString() == b.AsString();
  case JSONType::Bool:
    return a.AsBool() == b.AsBool();
  case JSONType::Array:
    if (a.CountChildren() != b.CountChildren()) {
      return false;
    }
    for (std::size_t i = 0; i < a.CountChildren(); ++i) {
      if (!sameShape(*a.Child(i), *b.Child(i))) {
        return false;
      }
    }
    return true;
  case JSONType::Object:
    if (a.ObjectKeys() != b.ObjectKeys()) {
      return false;
    }
    for (const auto& key : a.ObjectKeys()) {
      if (!sameShape(*a.Child(key), *b.Child(key))) {
        return false;
      }
    }
    return true;
  default:
    return true;
  }
}

// Strings of a parsed tree hold 16-bit characters only (raw ASCII or \u escapes), so the
// printed text must read back to the same shape, in both layouts, and a copy prints the same.
void checkRoundTrip(const JSONValue& value) {
  const std::wstring printed = JSON::Stringify(&value);
  const auto again = JSON::Parse(printed.c_str());
  if (!again || !sameShape(value, *again)) {
    std::abort();
  }
  const auto pretty = JSON::Parse(value.Stringify(true).c_str());
  if (!pretty || !sameShape(*again, *pretty)) {
    std::abort();
  }
  const JSONValue copy(value);
  if (JSON::Stringify(&copy) != printed) {
    std::abort();
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Bytes widened as signed values, the way the settings readers feed the parser.
  std::wstring wide;
  wide.reserve(size);
  for (std::size_t i = 0; i < size; ++i) {
    wide += static_cast<wchar_t>(static_cast<signed char>(data[i]));
  }
  if (const auto value = JSON::Parse(wide.c_str())) {
    checkRoundTrip(*value);
  }

  // The narrow entry converts under the C locale.
  const std::string narrow(reinterpret_cast<const char*>(data), size);
  (void)JSON::Parse(narrow.c_str());
  return 0;
}
