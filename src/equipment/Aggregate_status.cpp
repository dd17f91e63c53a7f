// The status of the machine: the statuses of all its control points, each weighted by its
// significance, reduced to one number for the display and the operators' alarm. The machine's
// points are read from CONTROL_POINT, so points fed by other modules count as well.
#include "equipment/Aggregate.h"

#include <limits>
#include <locale>
#include <sstream>

namespace {

// A point status at or below this has not been reckoned yet (a new point stores 0): it stays
// out of the mean whatever its weight.
constexpr double kLeastPointStatus = 0.01;
// The decisive status from which the machine is reported: orange, then yellow.
constexpr double kOrangeStatus = 2.5;
constexpr double kYellowStatus = 1.5;
constexpr int kOrangeMessage = 3;
constexpr int kYellowMessage = 2;
// A machine's status chooses its maximum as the decisive value with this status_type.
constexpr int kStatusTypeMaximum = 2;

// A status as it is stored: float digits, classic locale.
std::string statusText(float value) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream.precision(std::numeric_limits<float>::max_digits10);
  stream << value;
  return stream.str();
}

} // namespace

void Aggregate::calculateStatus() {
  double sum = 0.0;
  int counted = 0;
  int best = 0;
  for (const auto& [point_id, weight] : control_points_weight) {
    float point_status = 0.0f;
    db->readStatusElement(point_id, point_status);
    const double weighted = static_cast<double>(point_status * weight);
    if (weighted > status_max) {
      status_max = weighted;
      best = point_id;
    }
    // The test is on the point's own status, so a heavy weight does not pull a point that
    // was never reckoned into the mean.
    if (static_cast<double>(point_status) > kLeastPointStatus) {
      sum += weighted;
      ++counted;
    }
  }
  status = counted != 0 ? sum / counted : 1.0;

  const double decisive = status_type == kStatusTypeMaximum ? status_max : status;
  int type_message = 0;
  if (decisive >= kOrangeStatus) {
    type_message = kOrangeMessage;
  } else if (decisive >= kYellowStatus) {
    type_message = kYellowMessage;
  }
  if (type_message != 0) {
    // Filed at the point that weighs most, so the crew knows where to look first.
    db->notificationSystemSave("30", 0, date, 0, 0, name, type_message, organization_alias, 0,
                               best);
  }
}

void Aggregate::writeStatus() {
  const float stored = static_cast<float>(status);
  db->writeStatusStatusAggregate(stored, id, date);
  log->print("write status aggregate: " + statusText(stored) + "\n");
}
