#include "process/Calculation.h"

#include <algorithm>
#include <map>

#include "records/settings_parsers.h"

namespace {

// Seconds of a settings key in the milliseconds the loop's timers count. The product is
// taken modulo 2^64 and narrowed modulo 2^32, as the service's 64-bit arithmetic always did,
// so an absurd period cannot make the arithmetic undefined.
int thousandfold(long value) {
  const unsigned long product = static_cast<unsigned long>(value) * 1000ul;
  return static_cast<int>(static_cast<unsigned int>(product));
}

// The first number of a key, if the document holds the key with at least one number. An
// empty array ("calc_source": []) has no first number and leaves the field as it was.
const long* firstNumber(const std::map<std::string, std::vector<long>>& numbers,
                        const std::string& key) {
  const auto found = numbers.find(key);
  if (found == numbers.end() || found->second.empty()) {
    return nullptr;
  }
  return &found->second.front();
}

} // namespace

Calculation::Calculation(DataBase* db_, int id_) : db(db_), id(id_) {}

bool Calculation::initCalculation(std::string ip) {
  std::vector<int> ids;
  int smallest = 0;
  db->readCalculation(ids, smallest);
  if (std::find(ids.begin(), ids.end(), id) != ids.end()) {
    db->updateCalculation(id, ip);
    readVekSettings();
  } else {
    // A new instance has no settings yet; the loop reads them on its first pass.
    db->writeCalculation(id, ip, 0);
  }
  return true;
}

void Calculation::setVersion(std::string version) {
  db->writeVersion(id, version);
}

void Calculation::readVekSettings() {
  db->readVekCalculation(id, settings);

  std::map<std::string, std::vector<long>> numbers;
  std::map<std::string, std::string> texts;
  std::map<std::string, bool> flags;
  json_parse_vek_settings(settings, numbers, texts, flags);
  if (numbers.empty() && texts.empty() && flags.empty()) {
    return;
  }

  if (const auto found = numbers.find("source"); found != numbers.end()) {
    source = found->second;
  }
  if (const long* value = firstNumber(numbers, "calc_source")) {
    calc_source = *value;
  }
  if (const long* value = firstNumber(numbers, "remainder")) {
    remainder = static_cast<int>(*value);
  }
  if (const long* value = firstNumber(numbers, "middle")) {
    middle = static_cast<int>(*value);
  }
  if (const auto found = flags.find("log"); found != flags.end()) {
    log = found->second;
  }
  if (const long* value = firstNumber(numbers, "analyze_module")) {
    analyze_module = thousandfold(*value);
  }
  if (const long* value = firstNumber(numbers, "control_task")) {
    control_task = thousandfold(*value);
  }
  // The client id is scaled like the two periods; the Kafka side has always received it so.
  if (const long* value = firstNumber(numbers, "kafka_client_id")) {
    kafka_client_id = thousandfold(*value);
  }
  if (const auto found = texts.find("kafka_topic"); found != texts.end()) {
    kafka_topic = found->second;
  }
  if (const auto found = flags.find("kafka_enable"); found != flags.end()) {
    kafka_enable = found->second;
  }
}

void Calculation::updateCalc(int lag, int last_calculated_, std::string time) {
  last_calculated = last_calculated_;
  db->updateCalculation(id, lag, last_calculated, time);
}

bool Calculation::enableCalcSource(long module_source) const {
  if (calc_source == 0) {
    return true;
  }
  if (calc_source == 1 && std::find(source.begin(), source.end(), module_source) != source.end()) {
    return true;
  }
  if (calc_source < 2) {
    return false;
  }
  return module_source % calc_source == remainder;
}
