// Construction of the measurement object over real tables: the telemetry block in its two
// forms, the channels it takes from the machine, the MODULE_PARAM defaults, and the two
// reports on the row.
#include <algorithm>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "PipelineFixture.h"

namespace {

using namespace vek_test;

class DataParsingTest : public PipelineTest {};

TEST_F(DataParsingTest, SemicolonTelemetryNeedsFourFields) {
  PlantBuilder plant = machine(42, 103);
  plant.add(MeasurementRow(1, 42).module(103, 0).at("2024-05-01 10:00:00").tuError("21;-70;5;88"))
      .add(MeasurementRow(2, 42).module(103, 0).at("2024-05-01 10:00:00").tuError("21;-70;5"))
      .add(MeasurementRow(3, 42).module(103, 0).at("2024-05-01 10:00:00").tuError("1;2;3;4;"))
      .add(MeasurementRow(4, 42).module(103, 0).at("2024-05-01 10:00:00").tuError("21;x;5;88"))
      .add(MeasurementRow(5, 42).module(103, 0).at("2024-05-01 10:00:00").tuError("1;2;3;"));
  plant.insert(sql());

  const std::map<std::string, int> four = {
      {"TEMP", 21}, {"RSSI", -70}, {"RESET_COUNT", 5}, {"U_BATTERY", 88}};
  EXPECT_EQ(load(1)->tu_values, four);
  // Three fields: the tail after the last ";" would only count as the fourth.
  EXPECT_TRUE(load(2)->tu_values.empty());
  // A closing ";" leaves an empty tail, which is not taken as a fifth field.
  const std::map<std::string, int> closed = {
      {"TEMP", 1}, {"RSSI", 2}, {"RESET_COUNT", 3}, {"U_BATTERY", 4}};
  EXPECT_EQ(load(3)->tu_values, closed);
  // The splitter itself: a tail counts only in the fourth place.
  Measurement m = load(1);
  const std::pair<std::string, std::vector<std::string>> splits[] = {
      {"1;2", {"1"}},
      {"1;2;3;4", {"1", "2", "3", "4"}},
      {"1;2;3;4;", {"1", "2", "3", "4"}},
      {"a;b;c;d;e", {"a", "b", "c", "d"}},
      {";;;", {"", "", "", ""}},
      {"", {}}};
  for (const auto& [text, fields] : splits) {
    SCOPED_TRACE(text);
    std::vector<std::string> out;
    m->parsing_tu(text, out);
    EXPECT_EQ(out, fields);
  }
  // A field that is no number gives the row up.
  EXPECT_THROW(load(4), std::invalid_argument);
  // Three terminated fields make the empty tail the battery's field, which is no number.
  EXPECT_THROW(load(5), std::invalid_argument);
}

TEST_F(DataParsingTest, JsonTelemetryTakesThePresentKeysTruncated) {
  PlantBuilder plant = machine(42, 103);
  plant
      .add(MeasurementRow(1, 42)
               .module(103, 0)
               .at("2024-05-01 10:00:00")
               .telemetryJson({{"rssi", -71.9}}))
      .add(MeasurementRow(2, 42)
               .module(103, 0)
               .at("2024-05-01 10:00:00")
               .telemetryJson({{"temperature", -3.7},
                               {"rssi", -80.0},
                               {"count0", 12.99},
                               {"battery", 97.0},
                               {"state", 1.0},
                               {"humidity", 40.0}}))
      .add(MeasurementRow(3, 42).module(103, 0).at("2024-05-01 10:00:00").tuError("{broken"))
      .add(MeasurementRow(4, 42)
               .module(103, 0)
               .at("2024-05-01 10:00:00")
               .telemetryJson({{"temperature", 1e12}, {"rssi", -60.0}}));
  plant.insert(sql());

  // -71.9 truncates toward zero to -71.
  EXPECT_EQ(load(1)->tu_values, (std::map<std::string, int>{{"RSSI", -71}}));
  const std::map<std::string, int> full = {
      {"TEMP", -3}, {"RSSI", -80}, {"RESET_COUNT", 12}, {"U_BATTERY", 97}, {"STATE", 1}};
  EXPECT_EQ(load(2)->tu_values, full);

  testing::internal::CaptureStdout();
  Measurement broken = load(3);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "failed to parse settings raw\n");
  EXPECT_TRUE(broken->tu_values.empty());

  // A temperature beyond int is a broken reading: left out, the rest of the block stays.
  EXPECT_EQ(load(4)->tu_values, (std::map<std::string, int>{{"RSSI", -60}}));
}

TEST_F(DataParsingTest, ChannelsOfTheControlPointsAreTakenOncePerBinding) {
  PlantBuilder plant = machine(42, 6);
  // Channel 101 takes sub-channel "b" and is the only channel of points 12 and 13; the
  // machine lists it once per binding.
  plant.add(ChannelRow(101, 42).rawParam("b").axisOrder("zyx"))
      .add(BindingRow(101, 12))
      .add(BindingRow(101, 13))
      .add(ControlPointRow(12, 3).weight(1.0))
      .add(ControlPointRow(13, 3).weight(1.0))
      .add(ModuleParamRow(6, 2, 1, "rate", 25600.0))
      .add(ModuleParamRow(6, 3, 1, "rate", 1.0))
      .add(MeasurementRow(1, 42).module(6, 1).at("2024-05-01 10:00:00"));
  plant.insert(sql());

  Measurement m = load(1);
  ASSERT_EQ(m.aggregate->control_points.size(), 3u);
  std::vector<int> ids;
  for (const channel& ch : m->channels) {
    ids.push_back(ch.id);
  }
  std::sort(ids.begin(), ids.end());
  // Point 11 gives channel 100 once; points 12 and 13 each give both records of channel 101.
  EXPECT_EQ(ids, std::vector<int>({100, 101, 101, 101, 101}));
  EXPECT_EQ(m->channel_id, 0) << "the fallback channel is only for machines without points";
  EXPECT_EQ(m->organization_alias, "plant");
  EXPECT_EQ(m->param_info_id, 1);
  ASSERT_EQ(m->module_params.size(), 1u) << "defaults of the module's own revision only";
  EXPECT_EQ(m->module_params[0].name, "rate");
  EXPECT_EQ(m->module_params[0].value, 25600.0f);
}

TEST_F(DataParsingTest, MachineWithoutPointsUsesTheLastWholeModuleChannel) {
  PlantBuilder plant;
  plant.add(ModuleRow(7, 42, 103))
      .add(ChannelRow(100, 42).rawParam("").axisOrder("xyz"))
      .add(ChannelRow(101, 42).rawParam("a").axisOrder("abc"))
      .add(ChannelRow(102, 42).rawParam("").axisOrder("ZYX"))
      .add(MeasurementRow(1, 42).module(103, 1).at("2024-05-01 10:00:00"));
  plant.insert(sql());

  Measurement m = load(1);
  EXPECT_TRUE(m->channels.empty());
  EXPECT_EQ(m->channel_id, 102);
  EXPECT_EQ(m->axis_order, "ZYX");
}

TEST_F(DataParsingTest, VerifyAcceptsTheKnownPairsAndNamesRefusedMeasurements) {
  PlantBuilder plant = machine(42, 1);
  plant.add(MeasurementRow(1, 42).module(1, 1).at("2024-05-01 10:00:00"));
  plant.insert(sql());
  Measurement m = load(1);

  struct Case {
    int type_mod;
    int type_param;
    bool processed;
  };
  const Case cases[] = {{1, 0, true},     {1, 8, true},      {1, 9, false},   {9, 8, true},
                        {2, 8, true},     {8, 0, true},      {3, 21, true},   {3, 22, false},
                        {5, 6, true},     {7, 7, false},     {10, 10, true},  {10, 11, false},
                        {11, 1, true},    {11, 2, false},    {101, 4, true},  {102, 3, false},
                        {103, 1, true},   {106, 2, false},   {999, 0, false}, {999, 200, true},
                        {999, 201, true}, {999, 202, false}, {12, 77, true},  {12, -5, true},
                        {4, 1, false},    {1, -1, false}};
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.type_mod) + "/" + std::to_string(c.type_param));
    m->type_mod = c.type_mod;
    m->type_param = c.type_param;
    const std::string before = logText();
    EXPECT_EQ(m->verify(), c.processed);
    const std::string logged = logText().substr(before.size());
    // A refused telemetry row is passed over in silence.
    const bool says = !c.processed && c.type_param != 0;
    EXPECT_EQ(logged, says ? "type_mod/type_param  will not be processed\n" : "");
  }
}

TEST_F(DataParsingTest, PrintShowsTheTelemetryOnlyOnCompleteTelemetryRows) {
  PlantBuilder plant = machine(42, 103);
  plant
      .add(MeasurementRow(1, 42).module(103, 0).at("2024-05-01 10:00:00").telemetry(21, -70, 5, 88))
      .add(MeasurementRow(2, 42).module(103, 1).at("2024-05-01 10:00:00").telemetry(21, -70, 5, 88))
      .add(MeasurementRow(3, 42)
               .module(103, 0)
               .at("2024-05-01 10:00:00")
               .telemetryJson({{"temperature", 21}, {"rssi", -70}, {"count0", 5}}));
  plant.insert(sql());

  EXPECT_EQ(load(1)->print(),
            " 2024-05-01 10:00:00 source: 42, mod: 103, param: 0 tu: 21 -70 5 88\n");
  EXPECT_EQ(load(2)->print(), " 2024-05-01 10:00:00 source: 42, mod: 103, param: 1\n");
  EXPECT_EQ(load(3)->print(), " 2024-05-01 10:00:00 source: 42, mod: 103, param: 0\n");
}

} // namespace
