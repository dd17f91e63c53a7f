#include "store/sql_quote.h"

namespace sql {

std::string quoted(const std::string& text) {
  std::string out;
  out.reserve(text.size() + 2);
  out += '\'';
  // Whole stretches between quotes at once: the staged rows of a history quote thousands of dates.
  std::string::size_type from = 0;
  for (auto quote = text.find('\''); quote != std::string::npos; quote = text.find('\'', from)) {
    out.append(text, from, quote + 1 - from);
    out += '\'';
    from = quote + 1;
  }
  out.append(text, from, std::string::npos);
  out += '\'';
  return out;
}

} // namespace sql
