// Decoding of fu_raw: the gateways store each piece of a measurement as text, two prefix
// characters and then hexadecimal samples with their least significant byte first. The
// layout of the samples follows the piece's param_type_id, the width and reading of one sample
// its c_type.
#include "pipeline/DataParsing.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "logging/time_helpers.h"
#include "pipeline/hex_text.h"
#include "records/settings_parsers.h"
#include "store/DataBase.h"

using hex_text::parseHex;

namespace {

// The gateway's two-character prefix in front of the samples.
constexpr std::size_t kPrefix = 2;
// A timed record begins with a 64-bit time stamp: 16 hexadecimal characters.
constexpr std::size_t kStampWidth = 16;
// Time stamps above this are milliseconds since the epoch; up to it, seconds. Seconds stay
// below it until January 2065, milliseconds have been above it since February 1970.
constexpr std::uint64_t kLargestSecondsStamp = 3000000000ULL;
// A named value ends in one 32-bit sample.
constexpr std::size_t kNamedValueWidth = 8;

// The key of a timed record: the UTC time of its stamp, with the milliseconds in plain
// decimal after a point when the stamp counts milliseconds (5 ms gives ".5", none ".0").
std::string stampKey(std::uint64_t stamp) {
  if (stamp > kLargestSecondsStamp) {
    return sec_to_string(static_cast<long>(stamp / 1000)) + "." + std::to_string(stamp % 1000);
  }
  return sec_to_string(static_cast<long>(stamp));
}

bool knownFormat(int c_type) {
  return c_type >= 1 && c_type <= 8;
}

// The value of a sample's bits in its format (1 to 8).
double sampleValue(std::uint64_t bits, int c_type) {
  switch (c_type) {
  case 2:
    return static_cast<double>(static_cast<std::int16_t>(bits & 0xFFFFu));
  case 4:
  case 6:
    // The low 32 bits as a signed number: a 24-bit sample of format 4 never has its sign bit
    // there, so it is never negative.
    return static_cast<double>(static_cast<std::int32_t>(bits & 0xFFFFFFFFu));
  case 7: {
    const auto single = static_cast<std::uint32_t>(bits);
    float value = 0.0f;
    std::memcpy(&value, &single, sizeof value);
    return static_cast<double>(value);
  }
  default:
    // Formats 1, 3, 5 and 8 are unsigned; their low 32 bits are the value.
    return static_cast<double>(static_cast<std::uint32_t>(bits));
  }
}

// One sample of the piece's text at `at`, least significant byte first.
double readSample(const std::string& data, std::size_t at, std::size_t width, int c_type) {
  if (!knownFormat(c_type)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  return sampleValue(hex_text::parseLittleEndian(data, at, width), c_type);
}

} // namespace

int DataParsing::sampleWidth(int c_type) {
  switch (c_type) {
  case 1:
  case 2:
    return 4;
  case 3:
  case 4:
    return 6;
  case 5:
  case 6:
  case 7:
    return 8;
  default:
    return 2;
  }
}

double DataParsing::string_to_double(std::string hex, int c_type) {
  if (!knownFormat(c_type)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  return sampleValue(parseHex(hex), c_type);
}

bool DataParsing::decodeRaw(raw& piece) {
  if (!piece.settings.empty()) {
    piece.settings_values = json_parse_settings_raw(piece.settings);
  }
  const std::size_t width = static_cast<std::size_t>(sampleWidth(piece.c_type));
  const std::string& data = piece.data;
  const std::size_t n = data.size();

  // Only a piece of a named sub-channel is held to whole samples; a text shorter than its
  // prefix holds no whole sample either.
  bool whole = true;
  if (!piece.sub_channel.empty()) {
    whole = n >= kPrefix && (n - kPrefix) % width == 0;
  }

  // Samples are read only where they are complete: a truncated tail decodes to nothing.
  const int kind = piece.param_type_id;
  if (kind < 7 || kind == 13 || kind == 14) {
    piece.values.reserve(piece.values.size() + (n > kPrefix ? (n - kPrefix) / width : 0));
    for (std::size_t at = kPrefix; at + width <= n; at += width) {
      piece.values.push_back(readSample(data, at, width, piece.c_type));
    }
  } else if ((kind >= 7 && kind <= 12) || kind == 17 || kind == 18) {
    const std::size_t step = kStampWidth + width;
    for (std::size_t at = kPrefix; at + step <= n; at += step) {
      // The stamp is read unsigned: a stamp with its top bit set counts milliseconds, not a
      // time before 1970.
      const std::uint64_t stamp = hex_text::parseLittleEndian(data, at, kStampWidth);
      const double value = readSample(data, at + kStampWidth, width, piece.c_type);
      piece.timed_values[stampKey(stamp)] = value;
    }
  } else if (kind == 15) {
    // The parameter's name in bytes, then its value in the last four bytes. A piece too short
    // for the value carries neither.
    if (n < kPrefix + kNamedValueWidth) {
      piece.data.clear();
    } else {
      const std::size_t name_end = n - kNamedValueWidth;
      std::string name;
      for (std::size_t at = kPrefix; at + 2 <= name_end; at += 2) {
        name.push_back(static_cast<char>(hex_text::parseLittleEndian(data, at, 2)));
      }
      const double value = readSample(data, name_end, kNamedValueWidth, piece.c_type);
      piece.data = name;
      piece.values.push_back(value);
    }
  }
  return whole;
}

void DataParsing::readData() {
  db->readRaw(param_info_id, raws);
  if (raws.empty()) {
    no_data = true;
  }
  for (raw& piece : raws) {
    if (!decodeRaw(piece)) {
      no_data = true;
    }
  }
}
