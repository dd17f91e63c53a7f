#include "store/sql_quote.h"

namespace sql {

std::string quoted(const std::string& text) {
  std::string out;
  out.reserve(text.size() + 2);
  out += '\'';
  for (const char c : text) {
    if (c == '\'') {
      out += '\'';
    }
    out += c;
  }
  out += '\'';
  return out;
}

} // namespace sql
