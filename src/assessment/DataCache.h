#pragma once

#include <map>

// The statuses of control points as the measurement loop reckoned them, kept for the life of
// the loop (a recalculation job keeps one of its own). One thread uses it; there is no lock.
class DataCache {
public:
  // Keeps status for the control point unless the point already has one: the first status
  // reckoned for a point stays.
  void setCpStatus(int control_point_id, float status);
  // The status kept for the control point, 0.0 when none was kept.
  float getCpStatus(int control_point_id) const;

private:
  std::map<int, float> statuses;
};
