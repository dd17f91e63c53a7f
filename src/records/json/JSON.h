// Entry points and lexical helpers of the settings documents' JSON reader and printer.
#pragma once

#include <memory>
#include <string>

#include "records/json/JSONValue.h"

class JSON {
public:
  JSON() = delete;

  // Converts the text with mbstowcs under the current C locale and parses the wide form.
  // Null when the text does not convert or does not parse (or text is null).
  static std::unique_ptr<JSONValue> Parse(const char* text);

  // One value, with whitespace allowed around it and nothing else; null otherwise (and for
  // whitespace alone or a null pointer). The text ends at its first NUL character.
  static std::unique_ptr<JSONValue> Parse(const wchar_t* text);

  // The empty string for a null pointer, else the value printed without layout.
  static std::wstring Stringify(const JSONValue* value);

  // Skips blank, tab, carriage return and newline. True when a character remains.
  static bool SkipWhitespace(const wchar_t** data);

  // Entered after an opening quote, leaves *data after the closing one; str receives the
  // unescaped text. False at the end of text, at a raw character below 32 other than tab
  // (negative wide characters included), and at an unknown or short escape. Each \u escape is
  // one wide character: surrogate pairs are not joined.
  static bool ExtractString(const wchar_t** data, std::wstring& str);

  // The short escapes, read and printed alike: \" \\ \/ \b \f \n \r \t. The character
  // that the letter after a backslash stands for, 0 for a letter without a short escape.
  static wchar_t ShortEscapeCharacter(wchar_t letter);
  // The letter that follows the backslash when character is printed, 0 for a character
  // without a short escape.
  static wchar_t ShortEscapeLetter(wchar_t character);

  // Digits 0 to 9 from *data on, as v = v * 10 + digit in double; 0 when none stands there.
  static double ParseInt(const wchar_t** data);

  // Digits after a decimal point as the sum of digit times 0.1, 0.01, ... where each factor
  // is the previous one times 0.1. Settings written by earlier tools were read this way, so
  // the rounding of this sum is kept rather than a correctly rounded conversion.
  static double ParseDecimal(const wchar_t** data);
};
