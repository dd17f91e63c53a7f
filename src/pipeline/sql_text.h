// Numbers that the measurement object puts into statements and notifications itself, outside
// the store, as the store's driver prints them. Texts are quoted by the store's sql::quoted.
#pragma once

#include <string>

namespace sql_text {

// A float as libpqxx's to_string writes it: the shortest general form with float's nine
// significant digits, in the classic locale ("2", "0.100000001", "2.56204787e+12"), and "nan",
// "infinity" and "-infinity" for the values that are not finite.
std::string floatText(float value);

} // namespace sql_text
