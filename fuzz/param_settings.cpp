// Any text as PARAM_SETTINGS: the scanner returns settings, or throws one of the two
// exceptions the main loop expects of it, and never faults, leaks or stalls.
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "records/settings_parsers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  try {
    (void)parse_param_settings(text);
  } catch (const std::invalid_argument&) {
  } catch (const std::out_of_range&) {
  }
  return 0;
}
