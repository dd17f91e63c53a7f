#include "equipment/Visualization.h"

Visualization::Visualization(DataBase* db_, long source_) : source(source_), db(db_) {
  readData();
}

void Visualization::readData() {
  visualizations.clear();
  db->readVisualization(source, visualizations);
}

std::vector<visualization> Visualization::getData(const std::vector<int>& types) const {
  std::vector<visualization> selected;
  for (const int type : types) {
    for (const auto& item : visualizations) {
      if (item.type_param == type) {
        selected.push_back(item);
      }
    }
  }
  return selected;
}

std::vector<visualization> Visualization::getData(const std::vector<int>& types, int channel_id,
                                                  int control_point_id) const {
  std::vector<visualization> selected;
  for (const int type : types) {
    for (const auto& item : visualizations) {
      if (item.type_param == type && item.channel_id == channel_id &&
          item.control_point_id == control_point_id && item.active == 1) {
        selected.push_back(item);
      }
    }
  }
  return selected;
}
