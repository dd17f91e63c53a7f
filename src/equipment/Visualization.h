#pragma once

#include <vector>

#include "records/types.h"
#include "store/DataBase.h"

// The visualizations of one module: every displayed parameter of its channels and control
// points, with thresholds and latest values, read when the object is made and again on
// readData (the loop reloads them after the results are written, to assess what is new).
class Visualization {
public:
  // Reads the visualizations of source at once. db is borrowed and outlives the object.
  Visualization(DataBase* db, long source);

  // Replaces `visualizations` with what the store holds now.
  void readData();
  // Always true: a module without visualizations is valid, it just displays nothing.
  bool verify() const { return true; }

  // The visualizations whose type_param is in types, grouped type by type in the order of
  // types and in stored order within a type. A type given twice gives its rows twice.
  // Inactive rows are kept.
  std::vector<visualization> getData(const std::vector<int>& types) const;
  // As above, only the active rows of one channel and control point.
  std::vector<visualization> getData(const std::vector<int>& types, int channel_id,
                                     int control_point_id) const;

  long source = 0;
  std::vector<visualization> visualizations;

private:
  DataBase* db;
};
