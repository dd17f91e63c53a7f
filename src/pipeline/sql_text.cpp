#include "pipeline/sql_text.h"

#include <limits>
#include <locale>
#include <sstream>

namespace sql_text {

std::string floatText(float value) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream.precision(std::numeric_limits<float>::max_digits10);
  stream << value;
  return stream.str();
}

std::string quoted(const std::string& text) {
  std::string out = "'";
  for (char c : text) {
    out += c;
    if (c == '\'') {
      out += '\'';
    }
  }
  return out + "'";
}

} // namespace sql_text
