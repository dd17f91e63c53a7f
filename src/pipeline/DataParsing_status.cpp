// The status of each control point that this measurement touched: its parameters' colours
// against their thresholds, reduced to one number that the display paints on the machine,
// kept in the loop's cache and in CONTROL_POINT, with the notifications that a parameter in
// the two worst colours raises.
#include "pipeline/DataParsing.h"

#include <map>
#include <memory>
#include <string>

#include "assessment/DataCache.h"
#include "assessment/Status.h"
#include "logging/PrintLog.h"
#include "pipeline/sql_text.h"
#include "records/settings_parsers.h"
#include "store/DataBase.h"

namespace {

// Colours that raise a notification, and the message type each raises.
constexpr int kOrangeColor = 3;
constexpr int kBeyondOrangeColor = 4;
constexpr int kYellowMessage = 2;
constexpr int kOrangeMessage = 3;

int messageTypeOfColor(int color) {
  if (color == kOrangeColor) {
    return kYellowMessage;
  }
  if (color == kBeyondOrangeColor) {
    return kOrangeMessage;
  }
  return 0;
}

} // namespace

void DataParsing::computeStatus(std::vector<visualization> list) {
  // The last result of each control point stands for the point; results without a point
  // have nothing to paint.
  std::map<int, std::size_t> last_of_point;
  for (std::size_t i = 0; i < results.size(); ++i) {
    if (results[i].control_point_id != 0) {
      last_of_point[results[i].control_point_id] = i;
    }
  }

  for (const auto& [point_id, index] : last_of_point) {
    const calc_result r = results[index];
    // A failed computation says nothing about the machine: the point keeps its last status.
    if (r.status_calc != 0) {
      continue;
    }
    auto status = std::make_unique<Status>(db, source, param_info_id, r.channel_id,
                                           r.control_point_id, recalculation);
    std::vector<visualization> rows;
    for (const visualization& row : list) {
      if (row.channel_id == r.channel_id && row.control_point_id == r.control_point_id) {
        rows.push_back(row);
      }
    }
    status->readData(rows);
    log->print(status->report);
    status->calculateStatus();

    if (status->has_data) {
      const std::string text = sql_text::floatText(status->status);
      if (cache != nullptr) {
        cache->setCpStatus(point_id, status->status);
      }
      if (!recalculation) {
        db->writeStatusControlPoint(status->status, status->status_max, r.control_point_id,
                                    param.receipt_date);
      }
      log->print("write status element: " + text + "\n");
    }

    for (const result_param& parameter : r.result_params) {
      const auto found = status->parameters.find(parameter.name);
      if (found == status->parameters.end()) {
        continue;
      }
      const Status::data_status& assessed = found->second;
      std::map<std::string, std::vector<int>> rules;
      if (!assessed.message_settings.empty()) {
        rules = json_parse_message_settings(assessed.message_settings, "corridorActive");
      }
      const int type_message = messageTypeOfColor(assessed.color);
      if (type_message == 0 || recalculation || rules.empty()) {
        continue;
      }
      for (const auto& [code, recommendations] : rules) {
        if (!db->isMessageActive(code)) {
          continue;
        }
        const int recommendation = activeRecommendation(recommendations, type_message);
        db->notificationSave(code, source, receipt_date, 0, 0, "", type_message, organization_alias,
                             recommendation, r.channel_id, r.control_point_id, r.has_raw_data,
                             assessed.visualization_id);
      }
    }
  }
}
