#pragma once

// A fixture for the measurement object against the throwaway server: describe the plant and
// its measurements with PlantBuilder, then load() makes the objects the main loop makes for a
// row, over the real store.

#include <memory>
#include <string>

#include "equipment/Aggregate.h"
#include "equipment/Module.h"
#include "equipment/Visualization.h"
#include "pipeline/DataParsing.h"
#include "support/PlantBuilder.h"
#include "support/StoreTest.h"

namespace vek_test {

// The objects of one measurement row, destroyed in reverse order like the loop's.
struct Measurement {
  param_info info;
  std::unique_ptr<Module> module;
  std::unique_ptr<Aggregate> aggregate;
  std::unique_ptr<Visualization> shown;
  std::unique_ptr<DataParsing> parsing;

  DataParsing& operator*() { return *parsing; }
  DataParsing* operator->() { return parsing.get(); }
};

class PipelineTest : public StoreTest {
protected:
  // Starts each test from a bare plant and empty result tables, also when the tests of a
  // suite share one database (run directly rather than under ctest).
  void SetUp() override;

  // The organization "plant" at node 1 with machine 3 (equipment type 8, so no motor or
  // bearing is looked for) and its control point 11; module `source` of `type_module` with
  // channel 100, which stands for the whole module and is bound to point 11.
  static PlantBuilder machine(long source, int type_module);

  // Reads PARAM_INFO row id and builds Module, Aggregate, Visualization and DataParsing for it
  // as the main loop does, logging to the store's log.
  Measurement load(int id, bool recalculation = false);

  // Runs the measurement as the loop does for a row with data: readData, then setControlPoint
  // and run(true) for each control point, or run(false) without points.
  static void runAll(Measurement& m);

  // Number of rows of a query's count.
  int count(const std::string& statement) { return std::stoi(scalar(statement)); }
};

} // namespace vek_test
