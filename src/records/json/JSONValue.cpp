#include "records/json/JSONValue.h"

#include <cmath>
#include <limits>
#include <locale>
#include <sstream>
#include <utility>

#include "records/json/JSON.h"

namespace {

bool isDigit(wchar_t c) {
  return c >= L'0' && c <= L'9';
}

wchar_t lowerAscii(wchar_t c) {
  return (c >= L'A' && c <= L'Z') ? c + (L'a' - L'A') : c;
}

// The words true, false and null are accepted in any case (True, NULL): older tools wrote
// them so. Advances *data over the word when it stands there.
bool matchWord(const wchar_t** data, const wchar_t* word) {
  std::size_t n = 0;
  for (; word[n] != L'\0'; ++n) {
    // A NUL in the text differs from every letter, so the text is never read past its end.
    if (lowerAscii((*data)[n]) != word[n]) {
      return false;
    }
  }
  *data += n;
  return true;
}

std::unique_ptr<JSONValue> copyOf(const std::unique_ptr<JSONValue>& value) {
  return value ? std::make_unique<JSONValue>(*value) : nullptr;
}

const std::wstring kEmptyString;
const JSONArray kEmptyArray;
const JSONObject kEmptyObject;

} // namespace

JSONValue::JSONValue() = default;
JSONValue::JSONValue(const wchar_t* text)
    : payload(std::in_place_index<1>, text != nullptr ? text : L"") {}
JSONValue::JSONValue(std::wstring text) : payload(std::in_place_index<1>, std::move(text)) {}
JSONValue::JSONValue(bool value) : payload(std::in_place_index<2>, value) {}
JSONValue::JSONValue(double value) : payload(std::in_place_index<3>, value) {}
JSONValue::JSONValue(int value) : payload(std::in_place_index<3>, static_cast<double>(value)) {}
JSONValue::JSONValue(JSONArray elements) : payload(std::in_place_index<4>, std::move(elements)) {}
JSONValue::JSONValue(JSONObject members) : payload(std::in_place_index<5>, std::move(members)) {}

JSONValue::JSONValue(const JSONValue& other) {
  switch (other.Type()) {
  case JSONType::Null:
    break;
  case JSONType::String:
    payload.emplace<1>(std::get<1>(other.payload));
    break;
  case JSONType::Bool:
    payload.emplace<2>(std::get<2>(other.payload));
    break;
  case JSONType::Number:
    payload.emplace<3>(std::get<3>(other.payload));
    break;
  case JSONType::Array: {
    JSONArray elements;
    elements.reserve(std::get<4>(other.payload).size());
    for (const auto& element : std::get<4>(other.payload)) {
      elements.push_back(copyOf(element));
    }
    payload.emplace<4>(std::move(elements));
    break;
  }
  case JSONType::Object: {
    JSONObject members;
    for (const auto& [key, member] : std::get<5>(other.payload)) {
      members.emplace(key, copyOf(member));
    }
    payload.emplace<5>(std::move(members));
    break;
  }
  }
}

JSONValue& JSONValue::operator=(const JSONValue& other) {
  if (this != &other) {
    JSONValue copy(other);
    payload = std::move(copy.payload);
  }
  return *this;
}

JSONValue::JSONValue(JSONValue&& other) noexcept : payload(std::move(other.payload)) {}

JSONValue& JSONValue::operator=(JSONValue&& other) noexcept {
  payload = std::move(other.payload);
  return *this;
}

JSONValue::~JSONValue() = default;

std::unique_ptr<JSONValue> JSONValue::Parse(const wchar_t** data) {
  return Parse(data, 0);
}

// depth counts the arrays and objects that enclose the value.
std::unique_ptr<JSONValue> JSONValue::Parse(const wchar_t** data, std::size_t depth) {
  const wchar_t c = **data;
  if (c == L'"') {
    ++*data;
    std::wstring text;
    if (!JSON::ExtractString(data, text)) {
      return nullptr;
    }
    return std::make_unique<JSONValue>(std::move(text));
  }
  if (matchWord(data, L"true")) {
    return std::make_unique<JSONValue>(true);
  }
  if (matchWord(data, L"false")) {
    return std::make_unique<JSONValue>(false);
  }
  if (matchWord(data, L"null")) {
    return std::make_unique<JSONValue>();
  }
  if (c == L'-' || isDigit(c)) {
    return ParseNumber(data);
  }
  if (c == L'[' || c == L'{') {
    if (depth >= kMaxDepth) {
      return nullptr;
    }
    return c == L'[' ? ParseArray(data, depth + 1) : ParseObject(data, depth + 1);
  }
  return nullptr;
}

std::unique_ptr<JSONValue> JSONValue::ParseNumber(const wchar_t** data) {
  const bool negative = **data == L'-';
  if (negative) {
    ++*data;
  }

  // A leading zero is the whole integer part: "01" ends after the 0 and fails on the 1.
  double number = 0.0;
  if (**data == L'0') {
    ++*data;
  } else if (**data >= L'1' && **data <= L'9') {
    number = JSON::ParseInt(data);
  } else {
    return nullptr;
  }

  if (**data == L'.') {
    ++*data;
    if (!isDigit(**data)) {
      return nullptr;
    }
    number += JSON::ParseDecimal(data);
  }

  if (**data == L'e' || **data == L'E') {
    ++*data;
    bool negative_exponent = false;
    if (**data == L'-' || **data == L'+') {
      negative_exponent = **data == L'-';
      ++*data;
    }
    if (!isDigit(**data)) {
      return nullptr;
    }
    const double exponent = JSON::ParseInt(data);
    // One multiplication or division by ten per unit of the exponent, so that values keep
    // the rounding they always had. Once the value has reached 0 or infinity further rounds
    // change nothing, and stopping there keeps a huge exponent from stalling the service.
    for (double i = 0.0; i < exponent; i += 1.0) {
      const double next = negative_exponent ? number / 10.0 : number * 10.0;
      if (next == number) {
        break;
      }
      number = next;
    }
  }

  return std::make_unique<JSONValue>(negative ? -number : number);
}

std::unique_ptr<JSONValue> JSONValue::ParseArray(const wchar_t** data, std::size_t depth) {
  ++*data; // the "["
  JSONArray elements;
  if (!JSON::SkipWhitespace(data)) {
    return nullptr;
  }
  if (**data == L']') {
    ++*data;
    return std::make_unique<JSONValue>(std::move(elements));
  }
  while (true) {
    // After a "," a value must follow: "[1,]" is refused.
    if (!JSON::SkipWhitespace(data)) {
      return nullptr;
    }
    auto element = Parse(data, depth);
    if (!element) {
      return nullptr;
    }
    elements.push_back(std::move(element));
    if (!JSON::SkipWhitespace(data)) {
      return nullptr;
    }
    if (**data == L']') {
      ++*data;
      return std::make_unique<JSONValue>(std::move(elements));
    }
    if (**data != L',') {
      return nullptr;
    }
    ++*data;
  }
}

std::unique_ptr<JSONValue> JSONValue::ParseObject(const wchar_t** data, std::size_t depth) {
  ++*data; // the "{"
  JSONObject members;
  if (!JSON::SkipWhitespace(data)) {
    return nullptr;
  }
  if (**data == L'}') {
    ++*data;
    return std::make_unique<JSONValue>(std::move(members));
  }
  while (true) {
    if (!JSON::SkipWhitespace(data) || **data != L'"') {
      return nullptr;
    }
    ++*data;
    std::wstring key;
    if (!JSON::ExtractString(data, key)) {
      return nullptr;
    }
    if (!JSON::SkipWhitespace(data) || **data != L':') {
      return nullptr;
    }
    ++*data;
    if (!JSON::SkipWhitespace(data)) {
      return nullptr;
    }
    auto member = Parse(data, depth);
    if (!member) {
      return nullptr;
    }
    // A repeated key: the later value wins, the earlier one is released here.
    members[key] = std::move(member);
    if (!JSON::SkipWhitespace(data)) {
      return nullptr;
    }
    if (**data == L'}') {
      ++*data;
      return std::make_unique<JSONValue>(std::move(members));
    }
    if (**data != L',') {
      return nullptr;
    }
    ++*data;
  }
}

const std::wstring& JSONValue::AsString() const {
  const auto* text = std::get_if<1>(&payload);
  return text != nullptr ? *text : kEmptyString;
}

bool JSONValue::AsBool() const {
  const auto* flag = std::get_if<2>(&payload);
  return flag != nullptr && *flag;
}

double JSONValue::AsNumber() const {
  const auto* number = std::get_if<3>(&payload);
  return number != nullptr ? *number : std::numeric_limits<double>::quiet_NaN();
}

const JSONArray& JSONValue::AsArray() const {
  const auto* elements = std::get_if<4>(&payload);
  return elements != nullptr ? *elements : kEmptyArray;
}

const JSONObject& JSONValue::AsObject() const {
  const auto* members = std::get_if<5>(&payload);
  return members != nullptr ? *members : kEmptyObject;
}

std::size_t JSONValue::CountChildren() const {
  switch (Type()) {
  case JSONType::Array:
    return std::get<4>(payload).size();
  case JSONType::Object:
    return std::get<5>(payload).size();
  default:
    return 0;
  }
}

bool JSONValue::HasChild(std::size_t index) const {
  return index < AsArray().size();
}

const JSONValue* JSONValue::Child(std::size_t index) const {
  const JSONArray& elements = AsArray();
  return index < elements.size() ? elements[index].get() : nullptr;
}

bool JSONValue::HasChild(const std::wstring& name) const {
  return AsObject().count(name) != 0;
}

const JSONValue* JSONValue::Child(const std::wstring& name) const {
  const JSONObject& members = AsObject();
  const auto found = members.find(name);
  return found != members.end() ? found->second.get() : nullptr;
}

std::vector<std::wstring> JSONValue::ObjectKeys() const {
  std::vector<std::wstring> keys;
  for (const auto& member : AsObject()) {
    keys.push_back(member.first);
  }
  return keys;
}

std::wstring JSONValue::Stringify(bool pretty) const {
  return StringifyAt(pretty ? 1 : 0);
}

std::wstring JSONValue::Indent(std::size_t depth) {
  return depth > 1 ? std::wstring((depth - 1) * 2, L' ') : std::wstring();
}

std::wstring JSONValue::StringifyAt(std::size_t depth) const {
  const bool pretty = depth > 0;
  const std::size_t inner = pretty ? depth + 1 : 0;
  auto child = [inner](const std::unique_ptr<JSONValue>& value) {
    return value ? value->StringifyAt(inner) : std::wstring(L"null");
  };

  switch (Type()) {
  case JSONType::Null:
    return L"null";
  case JSONType::String:
    return StringifyString(std::get<1>(payload));
  case JSONType::Bool:
    return std::get<2>(payload) ? L"true" : L"false";
  case JSONType::Number: {
    const double number = std::get<3>(payload);
    if (std::isinf(number) || std::isnan(number)) {
      return L"null";
    }
    // The classic locale: the service may run under a locale with a decimal comma.
    std::wostringstream out;
    out.imbue(std::locale::classic());
    out.precision(15);
    out << number;
    return out.str();
  }
  case JSONType::Array: {
    std::wstring text = L"[";
    if (pretty) {
      text += L"\n" + Indent(inner);
    }
    bool first = true;
    for (const auto& element : std::get<4>(payload)) {
      if (!first) {
        text += L",";
      }
      first = false;
      text += child(element);
    }
    if (pretty) {
      text += L"\n" + Indent(depth);
    }
    return text + L"]";
  }
  case JSONType::Object: {
    std::wstring text = L"{";
    if (pretty) {
      text += L"\n" + Indent(inner);
    }
    bool first = true;
    for (const auto& [key, member] : std::get<5>(payload)) {
      if (!first) {
        text += L",";
      }
      first = false;
      text += StringifyString(key) + L":" + child(member);
    }
    if (pretty) {
      text += L"\n" + Indent(depth);
    }
    return text + L"}";
  }
  }
  return L"null";
}

std::wstring JSONValue::StringifyString(const std::wstring& text) {
  static const wchar_t kHex[] = L"0123456789ABCDEF";
  std::wstring out = L"\"";
  for (const wchar_t c : text) {
    if (const wchar_t letter = JSON::ShortEscapeLetter(c); letter != 0) {
      out += L'\\';
      out += letter;
    } else if (c >= 32 && c <= 126) {
      out += c;
    } else {
      // Four digits hold only 16 bits: a character beyond them keeps its low 16 bits.
      const auto code = static_cast<unsigned long>(static_cast<std::make_unsigned_t<wchar_t>>(c));
      out += L"\\u";
      for (int shift = 12; shift >= 0; shift -= 4) {
        out += kHex[(code >> shift) & 0xFu];
      }
    }
  }
  return out + L"\"";
}
