#include "pipeline/hex_text.h"

#include <stdexcept>

namespace hex_text {

namespace {

int digitValue(char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  if (c >= 'a' && c <= 'f') {
    return c - 'a' + 10;
  }
  if (c >= 'A' && c <= 'F') {
    return c - 'A' + 10;
  }
  return -1;
}

} // namespace

std::uint64_t parseHex(const std::string& text) {
  if (text.empty()) {
    throw std::invalid_argument("empty hexadecimal text");
  }
  std::uint64_t value = 0;
  for (char c : text) {
    const int digit = digitValue(c);
    if (digit < 0) {
      throw std::invalid_argument("not a hexadecimal text: " + text);
    }
    value = (value << 4) | static_cast<std::uint64_t>(digit);
  }
  return value;
}

std::uint64_t parseLittleEndian(const std::string& data, std::size_t at, std::size_t width) {
  std::uint64_t value = 0;
  for (std::size_t k = width; k >= 2; k -= 2) {
    const int high = digitValue(data[at + k - 2]);
    const int low = digitValue(data[at + k - 1]);
    if (high < 0 || low < 0) {
      throw std::invalid_argument("not a hexadecimal text: " + data.substr(at, width));
    }
    value = (value << 8) | static_cast<std::uint64_t>(high << 4 | low);
  }
  return value;
}

std::string mostSignificantFirst(const std::string& data, std::size_t at, std::size_t width) {
  std::string text;
  text.reserve(width);
  for (std::size_t k = width; k >= 2; k -= 2) {
    text.append(data, at + k - 2, 2);
  }
  return text;
}

} // namespace hex_text
