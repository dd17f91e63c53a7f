// Any text as VISUALIZATION.MESSAGE_SETTINGS, read for both situations the service asks for.
#include <cstddef>
#include <cstdint>
#include <string>

#include "records/settings_parsers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  (void)json_parse_message_settings(text, "corridorActive");
  (void)json_parse_message_settings(text, "rulActive");
  return 0;
}
