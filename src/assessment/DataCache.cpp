#include "assessment/DataCache.h"

void DataCache::setCpStatus(int control_point_id, float status) {
  statuses.emplace(control_point_id, status);
}

float DataCache::getCpStatus(int control_point_id) const {
  const auto found = statuses.find(control_point_id);
  return found == statuses.end() ? 0.0f : found->second;
}
