#include "PipelineFixture.h"

#include "records/settings_parsers.h"

namespace vek_test {

void PipelineTest::SetUp() {
  StoreTest::SetUp();
  if (HasFatalFailure()) {
    return;
  }
  PlantBuilder::emptyTables(sql());
  exec("TRUNCATE result_base, result, math_history, notification, defects, result_temp");
}

PlantBuilder PipelineTest::machine(long source, int type_module) {
  PlantBuilder plant;
  plant.add(OrganizationRow("plant").utc("UTC+3:00"))
      .add(NodeRow(1, "plant"))
      .add(ModuleRow(7, source, type_module).revision(2))
      .add(ChannelRow(100, source).rawParam("").axisOrder("xyz"))
      .add(BindingRow(100, 11))
      .add(AggregateRow(3, 1).equipmentType(8).name("pump 1"))
      .add(ControlPointRow(11, 3).weight(1.0));
  return plant;
}

Measurement PipelineTest::load(int id, bool recalculation) {
  Measurement m;
  store().readParamInfo(id, m.info);
  if (!m.info.param_settings.empty()) {
    m.info.settings = parse_param_settings(m.info.param_settings);
  }
  m.module = std::make_unique<Module>(&store(), m.info.source);
  m.aggregate =
      std::make_unique<Aggregate>(&store(), m.info.source, &log(), m.info.receipt_date, nullptr);
  m.shown = std::make_unique<Visualization>(&store(), m.info.source);
  m.parsing =
      std::make_unique<DataParsing>(&store(), m.module.get(), m.info, &log(), recalculation,
                                    m.aggregate.get(), m.shown->getData({1, 2, 3}), nullptr);
  return m;
}

void PipelineTest::runAll(Measurement& m) {
  m->readData();
  if (m.aggregate->control_points.empty()) {
    m->run(false);
    return;
  }
  for (const control_point& point : m.aggregate->control_points) {
    m->setControlPoint(point);
    m->run(true);
  }
}

} // namespace vek_test
