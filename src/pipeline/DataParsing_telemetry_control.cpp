// The telemetry block of a row without a measurement (type_param 0): whether the module's own
// report of temperature, signal strength, reset counter and battery can be believed, and the
// block's values written as a result of their own. A module that reboots, reports a dead
// battery or a signal of exactly zero without having restarted is flagged in MODULE's hardware
// status and in a notification, so that the maintenance crew looks at the sensor, not at the
// machine.
#include "pipeline/DataParsing.h"

#include <cctype>
#include <charconv>
#include <string>

#include "equipment/Aggregate.h"
#include "logging/PrintLog.h"
#include "store/DataBase.h"
#include "store/sql_quote.h"

namespace {

// A reset counter is displayed with four digits; a larger count is shown as the largest.
constexpr int kLargestShownResetCount = 9999;
// Hardware status bits of MODULE set by the telemetry judgement.
constexpr unsigned int kRebootedBit = 5;
constexpr unsigned int kImplausibleBit = 6;
// Message type of data and results.
constexpr int kDataMessage = 2;
// Field of the reset counter in the semicolon form of the block (temperature, signal, count).
constexpr std::size_t kResetCountField = 2;
// The wired vibration module has no battery: its zero is not an empty battery.
constexpr int kModuleWithoutBattery = 3;

// A field of the semicolon block as a base-ten integer, read as far as it is a number after
// leading blanks; a field that is no number, or not one an int holds, counts as 0 (no reading).
int fieldNumber(const std::string& field) {
  std::size_t start = 0;
  while (start < field.size() && std::isspace(static_cast<unsigned char>(field[start])) != 0) {
    ++start;
  }
  const char* first = field.data() + start;
  const char* last = field.data() + field.size();
  if (first != last && *first == '+') {
    ++first;
  }
  int value = 0;
  const auto [end, error] = std::from_chars(first, last, value);
  (void)end;
  return error == std::errc() ? value : 0;
}

} // namespace

bool DataParsing::control_tu(std::vector<visualization> list) {
  bool error = false;
  int reset_id = 0;
  for (const visualization& row : list) {
    if (row.name_param == "RESET_COUNT") {
      reset_id = row.id;
      break;
    }
  }
  // The place at which the module's messages are filed: the first channel of the machine's
  // points. A module without bound channels has no place, and its notes are filed at none.
  const int note_channel = channels.empty() ? 0 : channels.front().id;
  const int note_point = channels.empty() ? 0 : channels.front().control_point_id;

  const auto reset = tu_values.find("RESET_COUNT");
  if (reset != tu_values.end()) {
    const int reset_count = reset->second;
    const std::string reset_text = std::to_string(reset_id);

    // The oldest counter stored within the last day: a module that counted more than one
    // restart since then has rebooted repeatedly.
    const int day_value =
        db->getValueInt("SELECT VALUE FROM RESULT_BASE WHERE  VISUALIZATION_ID = " + reset_text +
                        " AND receipt_date >= (TO_TIMESTAMP(" + sql::quoted(receipt_date) +
                        ", 'yyyy-mm-dd hh24:mi:ss.ff6') - INTERVAL '01' DAY) ORDER BY "
                        "receipt_date ASC LIMIT 1");
    if (day_value > 0 &&
        static_cast<long long>(reset_count) > static_cast<long long>(day_value) + 1) {
      // Confirm with the module's previous telemetry row, so that one garbled count does not
      // report a reboot.
      int previous = 0;
      const std::string last_block =
          db->getValueString("SELECT tu_error FROM param_info WHERE type_param = 0 AND source = " +
                             std::to_string(source) + " AND ID < " + std::to_string(param_info_id) +
                             " ORDER BY ID DESC LIMIT 1; ");
      if (!last_block.empty()) {
        std::vector<std::string> fields;
        parsing_tu(last_block, fields);
        // A block in the JSON form, or one too short to hold a counter, confirms nothing.
        if (fields.size() > kResetCountField) {
          previous = fieldNumber(fields[kResetCountField]);
        }
      }
      if (previous != 0 && previous < reset_count && !recalculation && !channels.empty()) {
        db->notificationSystemSave("11", source, receipt_date, 1, 0, "", kDataMessage,
                                   organization_alias, note_channel, note_point);
        db->setHardwareStatusModule(source, kRebootedBit);
      }
    }

    const auto rssi = tu_values.find("RSSI");
    if (rssi != tu_values.end() && rssi->second == 0) {
      // A signal of exactly zero is what a module sends after a restart; without a restart
      // the block is garbage.
      const int last_value =
          db->getValueInt("SELECT VALUE FROM RESULT_BASE WHERE VISUALIZATION_ID = " + reset_text +
                          " ORDER BY receipt_date DESC LIMIT 1");
      if (last_value == reset_count) {
        log->print("RSSI=0 error, RESET_COUNT did not change\n");
        error = true;
      } else {
        log->print("RSSI=0 not error, RESET_COUNT +1\n");
      }
    }

    const auto battery = tu_values.find("U_BATTERY");
    if (battery != tu_values.end()) {
      if (type_mod != kModuleWithoutBattery && battery->second == 0) {
        log->print("error: TU param U_BATTERY= 0\n");
        error = true;
      }
      if (battery->second < 0 || reset_count < 0) {
        log->print("error: TU < 0\n");
        error = true;
      }
    }
  }

  if (error && !recalculation && !channels.empty()) {
    db->notificationSystemSave("29", source, receipt_date, 1, 0, "", kDataMessage,
                               organization_alias, note_channel, note_point);
    db->setHardwareStatusModule(source, kImplausibleBit);
  }

  // A module that reports a fault state of its own is noted even in a replay: the state is the
  // module's word, not a conclusion of this service.
  const auto state = tu_values.find("STATE");
  if (state != tu_values.end() && state->second != 0) {
    db->notificationSystemSave("4", source, receipt_date, 1, 0, std::to_string(source),
                               kDataMessage, organization_alias, note_channel, note_point);
  }
  return !error;
}

void DataParsing::write_tu_msg(std::vector<visualization> list) {
  int result_channel = 0;
  int result_point = 0;
  if (aggregate->control_points.empty() && channel_id != 0) {
    result_channel = channel_id;
  } else if (!list.empty()) {
    result_channel = list.front().channel_id;
    result_point = list.front().control_point_id;
  }

  calc_result result;
  result.param_info_id = param_info_id;
  result.receipt_date = receipt_date;
  result.source = source;
  result.channel_id = result_channel;
  result.control_point_id = result_point;
  result.status_calc = 0;
  result.status_vector = 0;
  result.has_raw_data = false;

  // One parameter per visualization, in list order. A visualization at another place, or of a
  // value the block did not carry (a STATE display for a module that sends the semicolon
  // block), still gives its parameter: without a name, value or visualization. The writers
  // meet it as they meet any parameter of no visualization: RESULT_BASE has no history for
  // visualization 0 and refuses the row, the loop gives the row up, and the parameters before
  // it in the list stay written.
  for (const visualization& row : list) {
    result_param parameter;
    const auto value = tu_values.find(row.name_param);
    if (row.channel_id == result_channel && row.control_point_id == result_point &&
        value != tu_values.end()) {
      parameter.name = row.name_param;
      parameter.visualization_id = row.id;
      parameter.value = static_cast<float>(value->second);
      if (row.name_param == "RESET_COUNT" && value->second > kLargestShownResetCount) {
        parameter.value = static_cast<float>(kLargestShownResetCount);
      }
    }
    result.result_params.push_back(parameter);
  }

  db->writeResultBase(organization_alias, result, recalculation);
  db->writeResultMathHistory(organization_alias, result);
  db->writeLatestData(result);
}
