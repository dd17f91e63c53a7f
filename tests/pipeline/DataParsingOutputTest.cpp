// Result output over real tables: which parameters of a result reach the store and with what
// values, the folding of middle, trend and monotonicity into them, what write leaves in
// RESULT_BASE, MATH_HISTORY and DEFECTS, and the announcement on standard output.
#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "PipelineFixture.h"

namespace {

using namespace vek_test;

const float kNaN = std::numeric_limits<float>::quiet_NaN();

class DataParsingOutput : public PipelineTest {
protected:
  // Machine 3 with point 11 on channel 100 and point 12 on channel 101; visualizations of
  // A, B, C, E, F at channel 100 and point 11 (ids 501..505), and of A at point 12 (id 599).
  void SetUp() override {
    PipelineTest::SetUp();
    if (HasFatalFailure()) {
      return;
    }
    PlantBuilder plant = machine(42, 103);
    plant.add(ChannelRow(101, 42).rawParam("b"))
        .add(BindingRow(101, 12))
        .add(ControlPointRow(12, 3).weight(1.0));
    int id = 501;
    for (const char* name : {"A", "B", "C", "E", "F"}) {
      plant.add(VisualizationRow(id++, 42, name).channel(100).controlPoint(11).thresholds(1, 2, 3));
    }
    plant.add(VisualizationRow(599, 42, "A").channel(101).controlPoint(12).thresholds(1, 2, 3))
        .add(MeasurementRow(1, 42).module(103, 1).at("2024-05-01 10:00:00"));
    plant.insert(sql());
  }

  // A result of measurement 1 at channel 100 and point 11 with the given parameters.
  static calc_result result(std::map<std::string, float> params) {
    calc_result r;
    r.param_info_id = 1;
    r.receipt_date = "2024-05-01 10:00:00";
    r.source = 42;
    r.channel_id = 100;
    r.control_point_id = 11;
    r.has_raw_data = false;
    r.params = std::move(params);
    return r;
  }
};

TEST_F(DataParsingOutput, OnlyShownParametersAreWrittenAndHugeValuesBecomeNaN) {
  Measurement m = load(1);
  // 1e6 is still a value; 1000000.1 (as float 1000000.125) is an artefact, in both signs.
  // D has no visualization; the A of point 12 belongs to another place.
  m->results.push_back(result({{"A", 1e6f},
                               {"B", 1000000.1f},
                               {"C", kNaN},
                               {"D", 5.0f},
                               {"E", -1e6f},
                               {"F", -1000000.1f}}));
  m->updateLatest(0, m.shown->getData({1}));
  const std::vector<result_param>& written = m->results[0].result_params;
  ASSERT_EQ(written.size(), 5u);
  const char* names[] = {"A", "B", "C", "E", "F"};
  const float values[] = {1e6f, kNaN, kNaN, -1e6f, kNaN};
  for (std::size_t k = 0; k < 5; ++k) {
    SCOPED_TRACE(names[k]);
    EXPECT_EQ(written[k].name, names[k]);
    EXPECT_EQ(written[k].visualization_id, 501 + static_cast<int>(k));
    if (std::isnan(values[k])) {
      EXPECT_TRUE(std::isnan(written[k].value));
    } else {
      EXPECT_EQ(written[k].value, values[k]);
    }
  }

  // Nothing shown at the result's place: an empty list of parameters. An index outside the
  // results does nothing.
  m->results.push_back(result({{"D", 1.0f}}));
  m->updateLatest(1, m.shown->getData({1}));
  EXPECT_TRUE(m->results[1].result_params.empty());
  m->updateLatest(2, m.shown->getData({1}));
  m->updateLatest(-1, m.shown->getData({1}));
  EXPECT_EQ(m->results.size(), 2u);
}

TEST_F(DataParsingOutput, MiddleTrendAndMonotoneFoldIntoTheirParameters) {
  Measurement m = load(1);
  m->results.push_back(result({{"A", 1.0f}, {"B", 2.0f}, {"C", 3.0f}}));
  m->updateLatest(0, m.shown->getData({1}));

  std::map<std::string, double> middles = {{"A", 1.5}, {"B", 1000000.01}, {"Z", 9.0}};
  m->updateLatest("middle", 0, middles);
  std::map<std::string, double> trends = {{"A", -0.25}};
  m->updateLatest("trend", 0, trends);
  std::map<std::string, double> monotones = {{"C", 0.75}};
  m->updateLatest("monotone", 0, monotones);
  std::map<std::string, double> other = {{"A", 7.0}};
  m->updateLatest("median", 0, other);
  m->updateLatest("middle", -1, other);
  m->updateRul(0, {{"C", "12 days"}});

  const std::vector<result_param>& p = m->results[0].result_params;
  ASSERT_EQ(p.size(), 3u);
  EXPECT_EQ(p[0].middle, 1.5f);
  EXPECT_EQ(p[0].trend, -0.25f);
  EXPECT_TRUE(std::isnan(p[0].monotone));
  // 1000000.01 narrows to the float 1000000, but the range is judged before narrowing.
  EXPECT_TRUE(std::isnan(p[1].middle));
  EXPECT_TRUE(std::isnan(p[1].trend));
  EXPECT_EQ(p[2].monotone, 0.75f);
  EXPECT_EQ(p[2].rul, "12 days");
  EXPECT_EQ(p[0].rul, "");
}

TEST_F(DataParsingOutput, PrintResultListsTheWrittenParameters) {
  Measurement m = load(1);
  calc_result r = result({{"A", 2.5f}, {"B", kNaN}, {"D", 1.0f}});
  r.status_calc = 1;
  r.status_vector = 0x20000000;
  m->results.push_back(r);
  m->updateLatest(0, m.shown->getData({1}));
  EXPECT_EQ(m->print_result(m->results[0]),
            "channel: 100, control_point: 11, status_calc: 1, status_vector: 536870912\n"
            "A: 2.500000\n"
            "B: nan\n");
}

TEST_F(DataParsingOutput, WriteStoresTheResultItsHistoryAndTheDefects) {
  Measurement m = load(1);
  m->defects = {{7, 2}, {3, 1}};
  m->results.push_back(result({{"A", 4.5f}, {"B", kNaN}}));
  m->updateLatest(0, m.shown->getData({1}));
  m->write(m->results[0]);

  EXPECT_EQ(scalar("SELECT value FROM result_501"), "4.5");
  EXPECT_EQ(scalar("SELECT COALESCE(value::text, 'NULL') FROM result_502"), "NULL");
  EXPECT_EQ(count("SELECT COUNT(*) FROM result_base WHERE param_info_id = 1"), 2);
  EXPECT_EQ(count("SELECT COUNT(*) FROM math_history WHERE param_info_id = 1"), 1);
  // The defect with the smallest number stands for the measurement.
  EXPECT_EQ(scalar("SELECT defect_code || '|' || defect_type FROM defects WHERE id = 1"), "3|1");

  // A recalculation of the same row looks first and updates in place: no duplicate message.
  exec("INSERT INTO list_of_messages (code, visible) VALUES ('27', true)");
  Measurement again = load(1, true);
  again->results.push_back(result({{"A", 5.5f}}));
  again->updateLatest(0, again.shown->getData({1}));
  again->write(again->results[0]);
  EXPECT_EQ(scalar("SELECT value FROM result_501"), "5.5");
  EXPECT_EQ(count("SELECT COUNT(*) FROM result_501"), 1);
  EXPECT_EQ(count("SELECT COUNT(*) FROM notification WHERE message_code = '27'"), 0);

  // The live path inserts straight away, so the same row again is a duplicate: message "27".
  Measurement live = load(1);
  live->results.push_back(result({{"A", 6.5f}}));
  live->updateLatest(0, live.shown->getData({1}));
  live->write(live->results[0]);
  EXPECT_EQ(scalar("SELECT value FROM result_501"), "5.5");
  EXPECT_EQ(count("SELECT COUNT(*) FROM notification WHERE message_code = '27'"), 1);
}

TEST_F(DataParsingOutput, WriteKafkaAnnouncesOnStandardOutputOnly) {
  Measurement m = load(1);
  m->results.push_back(result({{"A", 4.5f}}));
  testing::internal::CaptureStdout();
  m->write_kafka(m->results[0], "vek-results", 17);
  m->write_kafka(m->results[0], "vek-results", 17);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "write_kafka: topic: vek-results, id: 17\nwrite_kafka: topic: vek-results, id: 17\n");
  EXPECT_EQ(count("SELECT COUNT(*) FROM result_base"), 0);
}

} // namespace
