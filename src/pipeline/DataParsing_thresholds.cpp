// Findings turned into notifications: telemetry values of a module (battery, signal strength,
// temperature) that left the corridor their visualization draws, and the defects that a
// vibration computation found at a control point. Which messages and recommendations a
// corridor raises is data of the database (the visualization's message settings), so a plant
// changes its alarms without a new build.
#include "pipeline/DataParsing.h"

#include <string>

#include "logging/PrintLog.h"
#include "records/settings_parsers.h"
#include "store/DataBase.h"

namespace {

// Levels of a crossed corridor, passed as the notification's message type.
constexpr int kNoLevel = 0;
constexpr int kYellowLevel = 2;
constexpr int kOrangeLevel = 3;
// Codes of defects found by a vibration computation start above this.
constexpr long long kDefectCodeBase = 2000;
// Stored signal readings looked back on before a weak signal is reported.
constexpr std::size_t kSignalLookBack = 2;

// The level of x against thresholds whose order tells which way is bad: a yellow above orange
// means low values are bad (battery charge, signal strength), otherwise high values are. The
// orange test follows the yellow one, so a value past both is orange; a value on a threshold
// crosses nothing.
int corridorLevel(float x, float yellow, float orange) {
  int level = kNoLevel;
  if (yellow > orange) {
    if (x < yellow) {
      level = kYellowLevel;
    }
    if (x < orange) {
      level = kOrangeLevel;
    }
  } else {
    if (x > yellow) {
      level = kYellowLevel;
    }
    if (x > orange) {
      level = kOrangeLevel;
    }
  }
  return level;
}

} // namespace

void DataParsing::tu_threshold_control(std::vector<visualization> list) {
  const int note_channel = channels.empty() ? 0 : channels.front().id;
  const int note_point = channels.empty() ? 0 : channels.front().control_point_id;

  for (const visualization& row : list) {
    std::map<std::string, std::vector<int>> rules;
    if (!row.message_settings.empty()) {
      rules = json_parse_message_settings(row.message_settings, "corridorActive");
    }
    const auto found = tu_values.find(row.name_param);
    if (rules.empty() || row.corridor_active == 0 || found == tu_values.end()) {
      continue;
    }
    const int reading = found->second;
    const float x = static_cast<float>(reading);
    std::string text;
    int level = corridorLevel(x, row.yellow, row.orange);

    if (row.name_param == "U_BATTERY") {
      text = std::to_string(reading) + " %";
    }

    if (row.name_param == "RSSI" && level != kNoLevel) {
      // One weak reading is radio weather; only a signal that stayed low over the last three
      // readings is reported. The look-back judges low values bad whichever way the
      // thresholds run.
      level = kNoLevel;
      std::vector<std::vector<double>> stored;
      db->readDataTable("SELECT VALUE FROM RESULT_BASE WHERE VISUALIZATION_ID = " +
                            std::to_string(row.id) + " AND PARAM_INFO_ID < " +
                            std::to_string(param_info_id) + " ORDER BY PARAM_INFO_ID DESC LIMIT 2",
                        stored);
      if (stored.size() == kSignalLookBack && !stored[0].empty() && !stored[1].empty()) {
        const double p = stored[0].front();
        const double q = stored[1].front();
        const double now = static_cast<double>(x);
        const double yellow = static_cast<double>(row.yellow);
        const double orange = static_cast<double>(row.orange);
        if (yellow > now && yellow > p && yellow > q) {
          level = kYellowLevel;
        }
        if (orange > now && orange > p && orange > q) {
          level = kOrangeLevel;
        }
      }
    }

    if (level == kNoLevel || recalculation) {
      continue;
    }
    for (const auto& [code, recommendations] : rules) {
      if (!db->isMessageActive(code)) {
        continue;
      }
      const int recommendation = activeRecommendation(recommendations, level);
      db->notificationSave(code, source, receipt_date, 0, 0, text, level, organization_alias,
                           recommendation, note_channel, note_point, false, 0);
      log->print(false, true,
                 "recommendation for " + row.name_param + ": " + std::to_string(reading) +
                     " error: " + code + "\n");
    }
  }
}

void DataParsing::control_defects() {
  const int note_channel = point.channel_ids.empty() ? 0 : point.channel_ids.front();
  for (const auto& [defect, level] : defects) {
    db->notificationSystemSave(std::to_string(kDefectCodeBase + defect), source, receipt_date, 0, 0,
                               "", level + 1, organization_alias, note_channel, point.id);
  }
}

int DataParsing::activeRecommendation(const std::vector<int>& candidates, int type_message) const {
  for (int id : candidates) {
    if (db->isRecommendationActive(id, type_message)) {
      return id;
    }
  }
  return 0;
}
