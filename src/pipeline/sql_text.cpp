#include "pipeline/sql_text.h"

#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

namespace sql_text {

std::string floatText(float value) {
  // The driver names the non-finite values itself rather than leaving them to the stream,
  // which would print "inf" and, for a NaN with its sign bit set, "-nan".
  if (std::isnan(value)) {
    return "nan";
  }
  if (std::isinf(value)) {
    return value > 0.0f ? "infinity" : "-infinity";
  }
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream.precision(std::numeric_limits<float>::max_digits10);
  stream << value;
  return stream.str();
}

} // namespace sql_text
