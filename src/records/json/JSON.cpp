#include "records/json/JSON.h"

#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

struct ShortEscape {
  wchar_t letter;    // what follows the backslash
  wchar_t character; // what it stands for
};

constexpr ShortEscape kShortEscapes[] = {{L'"', L'"'},  {L'\\', L'\\'}, {L'/', L'/'},
                                         {L'b', L'\b'}, {L'f', L'\f'},  {L'n', L'\n'},
                                         {L'r', L'\r'}, {L't', L'\t'}};

} // namespace

std::unique_ptr<JSONValue> JSON::Parse(const char* text) {
  if (text == nullptr) {
    return nullptr;
  }
  std::vector<wchar_t> wide(std::strlen(text) + 1, L'\0');
  if (std::mbstowcs(wide.data(), text, wide.size()) == static_cast<std::size_t>(-1)) {
    return nullptr;
  }
  return Parse(wide.data());
}

std::unique_ptr<JSONValue> JSON::Parse(const wchar_t* text) {
  if (text == nullptr || !SkipWhitespace(&text)) {
    return nullptr;
  }
  auto value = JSONValue::Parse(&text);
  if (!value) {
    return nullptr;
  }
  // Anything after the value ("1 2", a second document) makes the whole text invalid.
  if (SkipWhitespace(&text)) {
    return nullptr;
  }
  return value;
}

std::wstring JSON::Stringify(const JSONValue* value) {
  return value != nullptr ? value->Stringify(false) : std::wstring();
}

bool JSON::SkipWhitespace(const wchar_t** data) {
  while (**data == L' ' || **data == L'\t' || **data == L'\r' || **data == L'\n') {
    ++*data;
  }
  return **data != L'\0';
}

bool JSON::ExtractString(const wchar_t** data, std::wstring& str) {
  str.clear();
  while (**data != L'\0') {
    wchar_t next = **data;
    if (next == L'\\') {
      ++*data;
      if (**data == L'u') {
        next = 0;
        for (int i = 0; i < 4; ++i) {
          ++*data;
          const wchar_t h = **data;
          // The end of text is no hexadecimal digit, so a short escape stops here.
          int digit = 0;
          if (h >= L'0' && h <= L'9') {
            digit = h - L'0';
          } else if (h >= L'a' && h <= L'f') {
            digit = h - L'a' + 10;
          } else if (h >= L'A' && h <= L'F') {
            digit = h - L'A' + 10;
          } else {
            return false;
          }
          next = static_cast<wchar_t>(next * 16 + digit);
        }
      } else {
        // The end of text has no short escape either.
        next = ShortEscapeCharacter(**data);
        if (next == 0) {
          return false;
        }
      }
    } else if (next == L'"') {
      ++*data;
      return true;
    } else if (next < L' ' && next != L'\t') {
      // Raw control characters are refused, and so are negative wide characters: a settings
      // byte of 0x80 or above widens to one, so non-ASCII text is refused here.
      return false;
    }
    str += next;
    ++*data;
  }
  return false;
}

double JSON::ParseInt(const wchar_t** data) {
  double value = 0.0;
  while (**data >= L'0' && **data <= L'9') {
    value = value * 10.0 + (**data - L'0');
    ++*data;
  }
  return value;
}

double JSON::ParseDecimal(const wchar_t** data) {
  double decimal = 0.0;
  double factor = 0.1;
  while (**data >= L'0' && **data <= L'9') {
    decimal += (**data - L'0') * factor;
    factor *= 0.1;
    ++*data;
  }
  return decimal;
}

wchar_t JSON::ShortEscapeCharacter(wchar_t letter) {
  for (const ShortEscape& escape : kShortEscapes) {
    if (escape.letter == letter) {
      return escape.character;
    }
  }
  return 0;
}

wchar_t JSON::ShortEscapeLetter(wchar_t character) {
  for (const ShortEscape& escape : kShortEscapes) {
    if (escape.character == character) {
      return escape.letter;
    }
  }
  return 0;
}
