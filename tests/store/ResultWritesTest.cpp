// The result writes of WorkPostgreSQL against the throwaway PostgreSQL: what each write leaves
// in the tables on a first and a repeated run, the values without a number, the duplicate
// paths through the real unique index.
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "OperationLogTest.h"

namespace {

const float kNaN = std::numeric_limits<float>::quiet_NaN();
const float kInf = std::numeric_limits<float>::infinity();

class StoreTest : public OperationLogTest {
protected:
  // Two parameters of one module, each with its visualization and so its history partition,
  // and message "27" switched on with a recommendation for data messages.
  void plant() {
    exec("INSERT INTO visualization (id, source, name_param) VALUES (5, 42, 'SKZ'), "
         "(6, 42, 'TEMP');"
         "INSERT INTO list_of_messages (code, visible) VALUES ('27', true);"
         "INSERT INTO recommendation (id, message_code, type_message_id, enabled) VALUES "
         "(70, '27', 2, true)");
  }

  static result_param param(const std::string& name, float value, int visualization_id) {
    result_param p;
    p.name = name;
    p.value = value;
    p.visualization_id = visualization_id;
    return p;
  }

  // One measurement's result at a control point, with the fraction of a second that timed
  // records carry.
  static calc_result measurement(int param_info_id, std::vector<result_param> params) {
    calc_result r;
    r.param_info_id = param_info_id;
    r.receipt_date = "2023-7-4 9:5:1.25";
    r.source = 42;
    r.channel_id = 10;
    r.control_point_id = 20;
    r.status_calc = 1;
    r.status_vector = 0x20000000;
    r.has_raw_data = false;
    r.result_params = std::move(params);
    return r;
  }

  int count(const std::string& table_and_condition) {
    return std::stoi(scalar("SELECT COUNT(*) FROM " + table_and_condition));
  }
};

class WorkPostgreSQLResultBase : public StoreTest {};

TEST_F(WorkPostgreSQLResultBase, LiveRepeatMeetsTheUniqueIndexAndRaisesMessage27) {
  plant();
  store().writeResultBase("plant", measurement(11, {param("SKZ", 1.5f, 5), param("TEMP", kNaN, 6)}),
                          false);
  const pqxx::result rows =
      query("SELECT visualization_id, param_info_id, receipt_date, source, value, status_calc, "
            "has_raw_data FROM result_base ORDER BY visualization_id");
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_STREQ(rows[0][1].c_str(), "11");
  EXPECT_STREQ(rows[0][2].c_str(), "2023-07-04 09:05:01.25");
  EXPECT_STREQ(rows[0][3].c_str(), "42");
  EXPECT_STREQ(rows[0][4].c_str(), "1.5");
  EXPECT_STREQ(rows[0][5].c_str(), "1");
  EXPECT_STREQ(rows[0][6].c_str(), "f");
  EXPECT_TRUE(rows[1][4].is_null()) << "a NaN parameter is stored as NULL";
  EXPECT_EQ(count("result_5"), 1) << "the row is in the visualization's partition";
  EXPECT_EQ(logText(), "write result_base: 2 param\n");

  // A repeat after a lost connection: the live path goes straight to the insert.
  EXPECT_NO_THROW(store().writeResultBase(
      "plant", measurement(11, {param("SKZ", 9.5f, 5), param("TEMP", 8.5f, 6)}), false));
  EXPECT_EQ(count("result_base"), 2);
  EXPECT_EQ(scalar("SELECT value FROM result_5"), "1.5") << "the stored value is kept";
  EXPECT_EQ(scalar("SELECT value FROM result_6"), "") << "the rest of the result is not written";
  EXPECT_EQ(logText(), "write result_base: 2 param\n"
                       "error duplicate data\n"
                       "write table notification, plant, error: 27\n");

  const pqxx::result notes =
      query("SELECT source, gateway_id, date_of_creation, additional_info, type_message_id, "
            "status, active_days, organization_alias, recommendation_id, channel_id, "
            "control_point_id, visualization_id, message_code, diagnostic_mode FROM notification");
  ASSERT_EQ(notes.size(), 1u);
  EXPECT_STREQ(notes[0][0].c_str(), "42");
  EXPECT_TRUE(notes[0][1].is_null());
  EXPECT_STREQ(notes[0][2].c_str(), "2023-07-04 09:05:01.25");
  EXPECT_TRUE(notes[0][3].is_null());
  EXPECT_STREQ(notes[0][4].c_str(), "2");
  EXPECT_STREQ(notes[0][5].c_str(), "0") << "a duplicate stays open for the operators";
  EXPECT_TRUE(notes[0][6].is_null());
  EXPECT_STREQ(notes[0][7].c_str(), "plant");
  EXPECT_STREQ(notes[0][8].c_str(), "70");
  EXPECT_STREQ(notes[0][9].c_str(), "10");
  EXPECT_STREQ(notes[0][10].c_str(), "20");
  EXPECT_TRUE(notes[0][11].is_null());
  EXPECT_STREQ(notes[0][12].c_str(), "27");
  EXPECT_STREQ(notes[0][13].c_str(), "f");
}

TEST_F(WorkPostgreSQLResultBase, ReplayUpdatesInPlaceAndKeepsTheIds) {
  plant();
  calc_result first = measurement(11, {param("SKZ", 1.5f, 5), param("TEMP", 2.5f, 6)});
  store().writeResultBase("plant", first, true);
  const std::string id5 = scalar("SELECT id FROM result_5");
  const std::string id6 = scalar("SELECT id FROM result_6");
  ASSERT_NE(id5, "");

  calc_result again = measurement(11, {param("SKZ", kInf, 5), param("TEMP", 3.75f, 6)});
  again.status_calc = 0;
  store().writeResultBase("plant", again, true);
  EXPECT_EQ(count("result_base"), 2);
  EXPECT_EQ(scalar("SELECT id FROM result_5"), id5);
  EXPECT_EQ(scalar("SELECT id FROM result_6"), id6);
  EXPECT_EQ(scalar("SELECT value FROM result_5"), "") << "an infinite value is stored as NULL";
  EXPECT_EQ(scalar("SELECT value FROM result_6"), "3.75");
  EXPECT_EQ(scalar("SELECT status_calc FROM result_6"), "0");
  EXPECT_EQ(count("notification"), 0);
  EXPECT_EQ(logText(), "write result_base: 2 param\nwrite result_base: 2 param\n");

  // Another time of the same visualization is a new row.
  again.receipt_date = "2023-7-4 9:5:2";
  store().writeResultBase("plant", again, true);
  EXPECT_EQ(count("result_5"), 2);

  // A result without parameters writes and logs nothing.
  store().writeResultBase("plant", measurement(12, {}), true);
  EXPECT_EQ(count("result_base"), 4);
  EXPECT_EQ(logText(), "write result_base: 2 param\nwrite result_base: 2 param\n"
                       "write result_base: 2 param\n");
}

TEST_F(WorkPostgreSQLResultBase, OtherFailuresPassToTheCaller) {
  plant();
  // Visualization 7 has no partition yet: the server refuses the row, and that is no duplicate.
  EXPECT_THROW(store().writeResultBase("plant", measurement(11, {param("X", 1.0f, 7)}), false),
               pqxx::sql_error);
  EXPECT_EQ(count("notification"), 0);
}

class WorkPostgreSQLResult : public StoreTest {};

TEST_F(WorkPostgreSQLResult, FirstRunInsertsSecondRunUpdatesOrAdds) {
  plant();
  exec("INSERT INTO visualization (id, source, name_param) VALUES (8, 42, 'O''Brien''s')");
  store().writeResult("plant",
                      measurement(11, {param("SKZ", 1.5f, 5), param("O'Brien's", 2.5f, 8)}));
  const pqxx::result rows = query("SELECT id, name_param, value, status_calc, status_vector, "
                                  "has_raw_data, receipt_date, source FROM result ORDER BY id");
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_STREQ(rows[0][1].c_str(), "SKZ");
  EXPECT_STREQ(rows[1][1].c_str(), "O'Brien's") << "a quote in a name is stored as it is";
  EXPECT_STREQ(rows[1][2].c_str(), "2.5");
  EXPECT_STREQ(rows[1][3].c_str(), "1");
  EXPECT_STREQ(rows[1][4].c_str(), "536870912");
  EXPECT_STREQ(rows[1][5].c_str(), "f");
  EXPECT_STREQ(rows[1][6].c_str(), "2023-07-04 09:05:01.25");
  EXPECT_STREQ(rows[1][7].c_str(), "42");
  const std::string first_id = rows[0][0].c_str();

  calc_result again =
      measurement(11, {param("SKZ", kNaN, 5), param("O'Brien's", 3.5f, 8), param("TEMP", 4.5f, 6)});
  again.status_calc = 0;
  again.status_vector = 4;
  store().writeResult("plant", again);
  EXPECT_EQ(count("result"), 3);
  EXPECT_EQ(scalar("SELECT id FROM result WHERE visualization_id = 5"), first_id);
  EXPECT_EQ(scalar("SELECT value FROM result WHERE visualization_id = 5"), "");
  EXPECT_EQ(scalar("SELECT status_vector FROM result WHERE visualization_id = 5"), "4");
  EXPECT_EQ(scalar("SELECT value FROM result WHERE visualization_id = 8"), "3.5");
  EXPECT_EQ(scalar("SELECT value FROM result WHERE visualization_id = 6"), "4.5");
  EXPECT_EQ(logText(), "write result: 2 param\nwrite result: 3 param\n");

  store().writeResult("plant", measurement(12, {}));
  EXPECT_EQ(logText(), "write result: 2 param\nwrite result: 3 param\nresult not recorded\n");
}

TEST_F(WorkPostgreSQLResult, ParameterHeldByAnotherMeasurementGivesMessage27) {
  plant();
  store().writeResult("plant", measurement(11, {param("SKZ", 1.5f, 5), param("TEMP", 2.5f, 6)}));

  // Another measurement at the same time for one of the visualizations.
  store().writeResult("O'Neil", measurement(12, {param("SKZ", 7.5f, 5)}));
  EXPECT_EQ(count("result"), 2);
  EXPECT_EQ(count("notification WHERE organization_alias = 'O''Neil'"), 1)
      << "a quote in the alias reaches the notification";

  exec("INSERT INTO visualization (id, source, name_param) VALUES (9, 42, 'KZ')");
  store().writeResult("plant", measurement(13, {param("SKZ", 7.5f, 5), param("KZ", 6.5f, 9)}));
  EXPECT_EQ(count("result WHERE param_info_id = 13"), 1) << "the free parameter is written";
  EXPECT_EQ(count("result WHERE param_info_id = 11 AND value = 1.5"), 1);

  // All of several parameters taken: no row is left to insert and the server's refusal of
  // the empty insert is no duplicate, so it reaches the caller.
  EXPECT_THROW(store().writeResult(
                   "plant", measurement(14, {param("SKZ", 1.0f, 5), param("TEMP", 1.0f, 6)})),
               pqxx::sql_error);
  EXPECT_EQ(count("result"), 3);
}

TEST_F(WorkPostgreSQLResult, TwoParametersOfOneVisualizationClashOnTheIndex) {
  plant();
  // Both rows pass the look-up and meet in one insert: the unique index refuses it, and its
  // name in the error turns the refusal into message "27".
  EXPECT_NO_THROW(store().writeResult(
      "plant", measurement(11, {param("SKZ", 1.5f, 5), param("SKZ", 2.5f, 5)})));
  EXPECT_EQ(count("result"), 0);
  EXPECT_EQ(count("notification WHERE message_code = '27'"), 1);
  EXPECT_EQ(logText(), "error duplicate data\nwrite table notification, plant, error: 27\n");

  EXPECT_NO_THROW(store().writeResultBase(
      "plant", measurement(11, {param("SKZ", 1.5f, 5), param("SKZ", 2.5f, 5)}), false));
  EXPECT_EQ(scalar("SELECT value FROM result_base"), "1.5");
  // Within a day the same place raises "27" once.
  EXPECT_EQ(count("notification WHERE message_code = '27'"), 1);
}

class WorkPostgreSQLMathHistory : public StoreTest {};

TEST_F(WorkPostgreSQLMathHistory, MarksACalculatedMeasurementOnceAndRefreshesIt) {
  // A first run without parameters leaves no mark and is no failure.
  EXPECT_NO_THROW(store().writeResultMathHistory("plant", measurement(11, {})));
  EXPECT_EQ(count("math_history"), 0);

  store().writeResultMathHistory("plant", measurement(11, {param("SKZ", 1.5f, 5)}));
  const pqxx::result rows = query("SELECT status_calc, status_vector, has_raw_data, "
                                  "EXTRACT(EPOCH FROM (now() AT TIME ZONE 'UTC') - calculated_at) "
                                  "FROM math_history WHERE param_info_id = 11");
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_STREQ(rows[0][0].c_str(), "1");
  EXPECT_STREQ(rows[0][1].c_str(), "536870912");
  EXPECT_STREQ(rows[0][2].c_str(), "f");
  // The mark is the UTC clock to the second.
  EXPECT_LT(std::fabs(std::stod(rows[0][3].c_str())), 5.0);

  calc_result again = measurement(11, {});
  again.status_calc = 0;
  again.status_vector = 0;
  again.has_raw_data = true;
  store().writeResultMathHistory("plant", again);
  EXPECT_EQ(count("math_history"), 1) << "a repeat refreshes, also without parameters";
  EXPECT_EQ(scalar("SELECT status_calc || ' ' || status_vector || ' ' || has_raw_data "
                   "FROM math_history"),
            "0 0 true");
}

class WorkPostgreSQLLatestData : public StoreTest {};

TEST_F(WorkPostgreSQLLatestData, FiniteValuesReplaceTheDisplayedOnesAndNaNOnlyMovesTheTime) {
  exec("INSERT INTO visualization (id, source, name_param, latest_raw_value, "
       "latest_middle_value, latest_trend_value, latest_monotone_value) VALUES "
       "(5, 42, 'SKZ', 1, 2, 3, 4), (6, 42, 'TEMP', 10, 20, 30, 40)");
  result_param full = param("SKZ", 1.25f, 5);
  full.middle = 2.25f;
  full.trend = kNaN;
  full.monotone = -0.5f;
  calc_result r = measurement(11, {full, param("TEMP", kNaN, 6)});
  store().writeLatestData(r);

  const auto row = [&](int id) {
    return scalar("SELECT latest_raw_value || ' ' || latest_middle_value || ' ' || "
                  "latest_trend_value || ' ' || latest_monotone_value || ' ' || value_at FROM "
                  "visualization WHERE id = " +
                  std::to_string(id));
  };
  EXPECT_EQ(row(5), "1.25 2.25 3 -0.5 2023-07-04 09:05:01.25");
  EXPECT_EQ(row(6), "10 20 30 40 2023-07-04 09:05:01.25");

  // Without a time the statement ends its list of columns on a comma, or has none at all
  // for a NaN: the server refuses it either way and the row keeps what it showed.
  r.receipt_date = "";
  r.result_params = {param("SKZ", 7.5f, 5)};
  EXPECT_THROW(store().writeLatestData(r), pqxx::sql_error);
  r.result_params = {param("SKZ", kNaN, 5)};
  EXPECT_THROW(store().writeLatestData(r), pqxx::sql_error);
  EXPECT_EQ(row(5), "1.25 2.25 3 -0.5 2023-07-04 09:05:01.25");
}

class WorkPostgreSQLResultTmp : public StoreTest {};

TEST_F(WorkPostgreSQLResultTmp, StagesRowsAndReturnsTheirVisualizationIds) {
  std::vector<result_temp> items(3);
  items[0] = {5, "2023-7-4 9:5:1.25", 1.5};
  items[1] = {6, "2023-7-4 9:5:2", std::nan("")};
  items[2] = {5, "2023-7-4 9:5:3", -std::numeric_limits<double>::infinity()};
  EXPECT_EQ(store().writeResultTmp(items), "5, 6, 5");
  const pqxx::result rows = query("SELECT v_id, receipt_date, value FROM result_temp ORDER BY "
                                  "receipt_date");
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_STREQ(rows[0][1].c_str(), "2023-07-04 09:05:01.25");
  EXPECT_STREQ(rows[0][2].c_str(), "1.5");
  EXPECT_TRUE(rows[1][2].is_null());
  EXPECT_TRUE(rows[2][2].is_null());

  // Nothing to stage: nothing written, no id.
  EXPECT_EQ(store().writeResultTmp({}), "");
  EXPECT_EQ(count("result_temp"), 3);
}

class WorkPostgreSQLStatusWrites : public StoreTest {};

TEST_F(WorkPostgreSQLStatusWrites, PointAndMachineStatusesAndTheirHistories) {
  exec("INSERT INTO control_point (id, aggregate_id) VALUES (20, 30), (21, 30);"
       "INSERT INTO aggregate (id) VALUES (30), (31)");
  store().writeStatusControlPoint(2.5f, kNaN, 20, "2023-7-4 9:5:1.5");
  EXPECT_EQ(scalar("SELECT status || ' ' || COALESCE(status_max::text, 'null') || ' ' || "
                   "status_at FROM control_point WHERE id = 20"),
            "2.5 null 2023-07-04 09:05:01.5");
  EXPECT_EQ(scalar("SELECT status FROM control_point WHERE id = 21"), "");

  store().writeStatusAggregate(1.75f, 3.0f, 31, "2023-7-4 9:5:2");
  EXPECT_EQ(scalar("SELECT status || ' ' || status_max || ' ' || status_at FROM aggregate "
                   "WHERE id = 31"),
            "1.75 3 2023-07-04 09:05:02");

  // The status of a measurement at a place: one row, refreshed on a repeat; an id of 0 is a
  // NULL both in the look-up and in the row.
  store().writeStatusStatusElement(42, 2.0f, 11, 10, 0);
  store().writeStatusStatusElement(42, 3.0f, 11, 10, 0);
  store().writeStatusStatusElement(42, 4.0f, 11, 10, 20);
  store().writeStatusStatusElement(42, 5.0f, 11, 0, 0);
  EXPECT_EQ(count("status_element"), 3);
  EXPECT_EQ(scalar("SELECT status FROM status_element WHERE channel_id = 10 AND "
                   "control_point_id IS NULL"),
            "3");
  EXPECT_EQ(scalar("SELECT status FROM status_element WHERE control_point_id = 20"), "4");
  EXPECT_EQ(scalar("SELECT status FROM status_element WHERE channel_id IS NULL"), "5");

  store().writeStatusStatusAggregate(1.5f, 30, "2023-7-4 9:5:1.25");
  store().writeStatusStatusAggregate(2.5f, 30, "2023-7-4 9:5:1.25");
  store().writeStatusStatusAggregate(kNaN, 30, "2023-7-4 9:5:3");
  EXPECT_EQ(count("status_aggregate"), 2);
  EXPECT_EQ(scalar("SELECT status FROM status_aggregate WHERE calculated_at = "
                   "'2023-07-04 09:05:01.25'"),
            "2.5");
  EXPECT_EQ(count("status_aggregate WHERE status IS NULL"), 1);
}

class WorkPostgreSQLSingleUpdates : public StoreTest {};

TEST_F(WorkPostgreSQLSingleUpdates, EachUpdateChangesItsRowOnly) {
  exec("INSERT INTO module (id, source, connection_status) VALUES (1, 42, 0), (2, 43, 0);"
       "INSERT INTO gateway (id, connection_status) VALUES (1, 0);"
       "INSERT INTO aggregate (id, mode) VALUES (30, 0), (31, 0);"
       "INSERT INTO organization_object (alias_name, connection_status) VALUES "
       "('O''Neil', 0), ('plant', 0)");

  store().writeAggregateMode(31, 2);
  EXPECT_EQ(scalar("SELECT string_agg(mode::text, ',' ORDER BY id) FROM aggregate"), "0,2");

  store().setConnectionStatus("MODULE", 2, 1);
  store().setConnectionStatus("GATEWAY", 1, 2);
  EXPECT_EQ(scalar("SELECT string_agg(connection_status::text, ',' ORDER BY id) FROM module"),
            "0,1");
  EXPECT_EQ(scalar("SELECT connection_status FROM gateway"), "2");

  store().setConnectionStatusOrganization("O'Neil", 1);
  EXPECT_EQ(scalar("SELECT connection_status FROM organization_object WHERE alias_name = "
                   "'O''Neil'"),
            "1");
  EXPECT_EQ(scalar("SELECT connection_status FROM organization_object WHERE alias_name = "
                   "'plant'"),
            "0");
}

TEST_F(WorkPostgreSQLSingleUpdates, InstanceRecordIsRegisteredAndReportsProgress) {
  store().writeCalculation(1, "10.0.0.5", 0);
  store().writeCalculation(2, "10.0.0.9", 7);
  store().updateCalculation(1, "10.0.0.6");
  store().updateCalculation(1, 12, 345, "2023-7-4 9:5:1");
  store().writeVersion(1, "{\"vek\":\"1.0 'beta'\"}");
  const pqxx::result rows =
      query("SELECT id, ip, lag, last_calculated, sync_time, version, settings FROM "
            "vek_calculation ORDER BY id");
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_STREQ(rows[0][1].c_str(), "10.0.0.6");
  EXPECT_STREQ(rows[0][2].c_str(), "12");
  EXPECT_STREQ(rows[0][3].c_str(), "345");
  EXPECT_STREQ(rows[0][4].c_str(), "2023-07-04 09:05:01");
  EXPECT_STREQ(rows[0][5].c_str(), "{\"vek\":\"1.0 'beta'\"}");
  EXPECT_TRUE(rows[0][6].is_null()) << "a new instance has no settings yet";
  EXPECT_STREQ(rows[1][1].c_str(), "10.0.0.9");
  EXPECT_STREQ(rows[1][2].c_str(), "7");
  EXPECT_TRUE(rows[1][4].is_null());
}

} // namespace
