// Any text as fu_raw.settings or TU_ERROR in JSON form.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "records/settings_parsers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  for (const auto& [name, value] : json_parse_settings_raw(text)) {
    if (name.empty()) {
      std::abort();
    }
    (void)value;
  }
  return 0;
}
