// Hexadecimal texts as the gateways and the forecast store them: each multi-byte number with
// its least significant byte first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace hex_text {

// The text as a base-16 number, keeping its low 64 bits. Throws std::invalid_argument for an
// empty text or one with any character that is not a hexadecimal digit (no sign, no "0x", no
// blank), so that a damaged transmission never turns into a plausible number.
std::uint64_t parseHex(const std::string& text);

// The number whose little-endian hexadecimal text is the `width` characters of `data` at `at`
// (width even, at most 16, and at + width within data): parseHex(mostSignificantFirst(...))
// without building the text. Throws std::invalid_argument for a character that is not a
// hexadecimal digit.
std::uint64_t parseLittleEndian(const std::string& data, std::size_t at, std::size_t width);

// The `width` characters of `data` at `at` with their byte pairs taken from last to first:
// the digits of a little-endian number, most significant first. `width` is even and
// at + width lies within data.
std::string mostSignificantFirst(const std::string& data, std::size_t at, std::size_t width);

} // namespace hex_text
