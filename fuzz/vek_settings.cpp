// Any text as VEK_CALCULATION.settings, read into maps that already hold earlier settings,
// which must survive a document that is not an object.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "records/settings_parsers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::map<std::string, std::vector<long>> numbers = {{"calc_source", {2}}};
  std::map<std::string, std::string> texts = {{"kafka_topic", "t"}};
  std::map<std::string, bool> flags = {{"log", true}};
  json_parse_vek_settings(text, numbers, texts, flags);
  // Keys are replaced, never removed.
  if (numbers.count("calc_source") == 0 || texts.count("kafka_topic") == 0 ||
      flags.count("log") == 0) {
    std::abort();
  }
  return 0;
}
