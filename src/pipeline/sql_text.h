// Texts that the measurement object puts into statements and notifications itself, outside
// the store: numbers as the store's driver prints them, and quoted texts.
#pragma once

#include <string>

namespace sql_text {

// A float as libpqxx's to_string writes it: the shortest general form with float's nine
// significant digits, in the classic locale ("2", "0.100000001", "2.56204787e+12"), and "nan",
// "infinity" and "-infinity" for the values that are not finite.
std::string floatText(float value);

// The text between single quotes with every quote inside doubled, so that a quote in stored
// text cannot end the literal. For a text without a quote this is "'" + text + "'".
std::string quoted(const std::string& text);

} // namespace sql_text
