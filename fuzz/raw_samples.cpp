// Any fu_raw piece: the first byte picks the layout (param_type_id) and the second the sample
// format (c_type), the third whether the piece names a sub-channel; the rest is the data text.
// Decoding either reads the samples or refuses a text that is not hexadecimal; it never reads
// past the text, and what it reads back keeps its invariants.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "pipeline/DataParsing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) {
    return 0;
  }
  raw piece;
  // -2 to 21 covers every layout and some on either side of them.
  piece.param_type_id = static_cast<int>(data[0] % 24) - 2;
  piece.c_type = static_cast<int>(data[1] % 11);
  if (data[2] % 2 == 1) {
    piece.sub_channel = "x";
  }
  piece.data.assign(reinterpret_cast<const char*>(data + 3), size - 3);
  const std::size_t length = piece.data.size();
  const std::size_t width = static_cast<std::size_t>(DataParsing::sampleWidth(piece.c_type));
  try {
    const bool whole = DataParsing::decodeRaw(piece);
    if (piece.sub_channel.empty() && !whole) {
      std::abort(); // only a named sub-channel is held to whole samples
    }
    if (piece.values.size() * width > length) {
      std::abort(); // more samples than the text holds
    }
    if (piece.param_type_id == 15 && piece.data.size() > length) {
      std::abort(); // a name is never longer than its hexadecimal text
    }
  } catch (const std::invalid_argument&) {
    // A text that is not hexadecimal is refused; the row is given up.
  }
  return 0;
}
