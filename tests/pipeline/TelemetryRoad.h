#pragma once

// What the telemetry and assessment tests share: the main loop's road for a row without a
// measurement, and the rows that notifications and modules leave, as text.

#include <string>

#include "PipelineFixture.h"

namespace vek_test {

class TelemetryTest : public PipelineTest {
protected:
  // The loop's road for a telemetry row: the first active bound channel chooses the place,
  // control_tu judges the block, and only a believed block is written and compared with its
  // corridors. Returns what control_tu returned.
  static bool telemetryRow(Measurement& m) {
    const Aggregate& machine = *m.aggregate;
    if (machine.channels.empty() || machine.control_points.empty()) {
      return false;
    }
    int channel_id = 0;
    int control_point_id = 0;
    for (const channel& ch : machine.channels) {
      if (ch.control_point_id != 0 && ch.active) {
        channel_id = ch.id;
        control_point_id = ch.control_point_id;
        break;
      }
    }
    if (!m->control_tu(m.shown->getData({2}, channel_id, control_point_id))) {
      return false;
    }
    m->write_tu_msg(m.shown->getData({2}, channel_id, control_point_id));
    m->tu_threshold_control(m.shown->getData({2}, channel_id, control_point_id));
    return true;
  }

  // A telemetry visualization (class 2) of module 42 at channel 100 and control point 11.
  static VisualizationRow telemetryShown(int id, const std::string& name) {
    return VisualizationRow(id, 42, name).typeParam(2).channel(100).controlPoint(11).kz(1.0);
  }

  // The notifications of code, oldest first, one line each:
  // "date|status|type|source|channel|point|info|recommendation|visualization|diagnostic"
  // with NULL for a missing value and "t" or "f" for the diagnostic mode.
  std::string notes(const std::string& code) {
    std::string text;
    for (const auto& row : query("SELECT date_of_creation, status, type_message_id, source, "
                                 "channel_id, control_point_id, additional_info, "
                                 "recommendation_id, visualization_id, diagnostic_mode "
                                 "FROM notification WHERE message_code = '" +
                                 code + "' ORDER BY id")) {
      for (const auto& field : row) {
        text += (field.is_null() ? std::string("NULL") : std::string(field.c_str())) + "|";
      }
      text.back() = '\n';
    }
    return text;
  }

  std::string hardwareStatus() { return scalar("SELECT hardware_status FROM module WHERE id = 7"); }
};

} // namespace vek_test
