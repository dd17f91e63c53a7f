// What the schema must do for the store: the result partitions that follow the visualizations,
// the unique index by whose name a duplicate is recognised, the sequences behind the ids, and
// the columns whose shape the writers and readers rely on. The store's own operations do the
// writing; plain statements of the test only set up rows and provoke the server's refusals.
#include <cmath>
#include <pqxx/pqxx>
#include <string>
#include <vector>

#include "support/StoreTest.h"

namespace {

using vek_test::StoreTest;

class Schema : public StoreTest {
protected:
  bool isPartitionOfResultBase(const std::string& table) {
    return scalar("SELECT COUNT(*) FROM pg_inherits WHERE inhparent = 'result_base'::regclass "
                  "AND inhrelid = to_regclass('" +
                  table + "')") == "1";
  }

  // One parameter of measurement param_info_id for visualization_id at date.
  static calc_result result(int param_info_id, int visualization_id, const std::string& date) {
    result_param p;
    p.name = "TEMP";
    p.value = 1.5f;
    p.visualization_id = visualization_id;
    calc_result r;
    r.param_info_id = param_info_id;
    r.receipt_date = date;
    r.source = 42;
    r.result_params = {p};
    return r;
  }

  // The text of the error that the test's own statement raises, or "" when it runs.
  std::string errorOf(const std::string& statement) {
    try {
      exec(statement);
    } catch (const pqxx::sql_error& e) {
      return e.what();
    }
    return "";
  }
};

TEST_F(Schema, NewVisualizationGetsItsResultPartitionAtOnce) {
  EXPECT_EQ(scalar("SELECT to_regclass('result_5')"), "");
  exec("INSERT INTO visualization (id, source, name_param) VALUES (5, 42, 'TEMP'), "
       "(1234, 42, 'SPEED')");
  EXPECT_TRUE(isPartitionOfResultBase("result_5"));
  EXPECT_TRUE(isPartitionOfResultBase("result_1234"));

  // The store inserts into RESULT_BASE and finds the row again through the suffixed table.
  store().writeResultBase("plant", result(1, 5, "2023-7-4 9:5:1.25"), false);
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM result_5"), "1");
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM result_1234"), "0");

  // A visualization renumbered by the operators gets a partition under its new id; the old
  // one keeps its history.
  exec("UPDATE visualization SET id = 6 WHERE id = 5");
  EXPECT_TRUE(isPartitionOfResultBase("result_6"));
  EXPECT_TRUE(isPartitionOfResultBase("result_5"));

  // Re-creating a deleted visualization finds its history where it was.
  exec("DELETE FROM visualization WHERE id = 1234");
  exec("INSERT INTO visualization (id, source, name_param) VALUES (1234, 42, 'SPEED')");
  EXPECT_TRUE(isPartitionOfResultBase("result_1234"));
}

TEST_F(Schema, DuplicateResultNamesTheUniqueIndexInItsError) {
  exec("INSERT INTO visualization (id, source, name_param) VALUES (31, 42, 'TEMP'), "
       "(32, 42, 'TEMP')");
  const auto history = [](int visualization_id, const std::string& date) {
    return "INSERT INTO result_base (visualization_id, receipt_date) VALUES (" +
           std::to_string(visualization_id) + ", '" + date + "')";
  };
  EXPECT_EQ(errorOf(history(31, "2023-07-04 09:05:01.5")), "");
  const std::string duplicate = errorOf(history(31, "2023-07-04 09:05:01.5"));
  EXPECT_NE(duplicate.find("result_visualization_id_index"), std::string::npos) << duplicate;
  // Another time of the same visualization, and the same time of another one, are no clash.
  EXPECT_EQ(errorOf(history(31, "2023-07-04 09:05:01.500001")), "");
  EXPECT_EQ(errorOf(history(32, "2023-07-04 09:05:01.5")), "");

  const std::string named = "INSERT INTO result (visualization_id, receipt_date) VALUES "
                            "(31, '2023-07-04 09:05:01')";
  EXPECT_EQ(errorOf(named), "");
  const std::string named_duplicate = errorOf(named);
  EXPECT_NE(named_duplicate.find("result_visualization_id_index"), std::string::npos)
      << named_duplicate;
}

TEST_F(Schema, WorkTableAndBulkUpdateOfTheHistory) {
  // The shape of the middle and trend write-back: rows go to result_temp, one UPDATE joins
  // them to the history by visualization and time, then the work table is emptied.
  exec("INSERT INTO visualization (id, source, name_param) VALUES (40, 42, 'RMS')");
  store().writeResultBase("plant", result(1, 40, "2023-7-4 9:5:1.25"), false);
  store().writeResultBase("plant", result(2, 40, "2023-7-4 9:6:1"), false);
  const std::string ids = store().writeResultTmp(
      {{40, "2023-7-4 9:5:1.25", 0.25}, {40, "2023-7-4 9:6:1", std::nan("")}});
  store().writeData("UPDATE result_base SET middle = t.value FROM result_temp t WHERE "
                    "result_base.visualization_id IN (" +
                    ids +
                    ") AND result_base.visualization_id = t.v_id AND "
                    "result_base.receipt_date = t.receipt_date");
  store().writeData("TRUNCATE TABLE result_temp");
  EXPECT_EQ(scalar("SELECT string_agg(coalesce(middle::text, 'NULL'), ',' ORDER BY receipt_date) "
                   "FROM result_40"),
            "0.25,NULL");
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM result_temp"), "0");
}

TEST_F(Schema, HardwareStatusStartsEmptyAndTakesEveryBit) {
  exec("INSERT INTO module (id, source) VALUES (1, 42), (2, 43)");
  // The status only gains bits; a bit number wraps at 32, and the top bit fits.
  store().setHardwareStatusModule(42, 2);
  store().setHardwareStatusModule(42, 0);
  store().setHardwareStatusModule(42, 34);
  EXPECT_EQ(scalar("SELECT hardware_status FROM module WHERE source = 42"), "5");
  store().setHardwareStatusModule(42, 31);
  EXPECT_EQ(scalar("SELECT hardware_status FROM module WHERE source = 42"), "2147483653");
  EXPECT_EQ(scalar("SELECT hardware_status FROM module WHERE source = 43"), "0");
}

TEST_F(Schema, ForecastCurveIsStoredAsBytesAndReadBackAsHex) {
  exec("INSERT INTO visualization (id, source, name_param) VALUES (50, 42, 'RMS_X');"
       "INSERT INTO observed_param (name) VALUES ('RMS_X')");
  // One record: 86401 seconds as 8 bytes, 1.0f as 4 bytes, both little-endian.
  const std::string record = "8151010000000000"
                             "0000803f";
  store().writeRulVisualization(50, "'\\\\x" + record + "'");
  EXPECT_EQ(scalar("SELECT length(rul_data) FROM visualization WHERE id = 50"), "12");
  std::vector<visualization> items;
  store().readVisualization(42, items);
  ASSERT_EQ(items.size(), 1u);
  EXPECT_EQ(items[0].rul_data, "\\x" + record);
}

TEST_F(Schema, SequencesGiveTheIdsOfInsertedRows) {
  exec("INSERT INTO visualization (id, source, name_param) VALUES (5, 42, 'TEMP')");
  for (int k = 1; k <= 2; ++k) {
    SCOPED_TRACE("row " + std::to_string(k));
    const std::string date = "2023-7-" + std::to_string(k) + " 9:5:1";
    store().writeResult("plant", result(k, 5, date));
    store().writeResultBase("plant", result(k, 5, date), false);
    store().writeStatusStatusElement(42, 1.5f, k, 0, 0);
    store().writeStatusStatusAggregate(2.0f, 3, date);
    store().notificationSave("26", 42, date, 1, 0, "", 2, "plant", 0, 0, 0, false, 0);
    const std::string id = std::to_string(k);
    EXPECT_EQ(scalar("SELECT id FROM result WHERE param_info_id = " + id), id);
    EXPECT_EQ(scalar("SELECT id FROM result_base WHERE param_info_id = " + id), id);
    EXPECT_EQ(scalar("SELECT id FROM status_element WHERE param_info_id = " + id), id);
    EXPECT_EQ(
        scalar("SELECT id FROM status_aggregate WHERE calculated_at::date = '2023-07-0" + id + "'"),
        id);
    EXPECT_EQ(
        scalar("SELECT id FROM notification WHERE date_of_creation::date = '2023-07-0" + id + "'"),
        id);
  }
}

TEST_F(Schema, MotorNameplateHoldsWhatWasTypedIn) {
  // The nameplate is converted by the reader, which reports a field it cannot read; the table
  // must accept such a field in the first place.
  exec("INSERT INTO motor (id, power, speed, i, u, p2, class_vibro) VALUES "
       "(1, '55', 'abc', '', NULL, '3', '2')");
  EXPECT_EQ(scalar("SELECT speed FROM motor WHERE id = 1"), "abc");
}

TEST_F(Schema, RecalculationTimesCompareWithReceiptDates) {
  exec("INSERT INTO param_info (id, source, type_param, receipt_date) VALUES "
       "(1, 42, 3, '2023-07-04 09:05:01.25'), (2, 42, 3, '2023-07-04 09:06:00');"
       "INSERT INTO recalculation (id, source, time_start, time_stop, state, control) VALUES "
       "(1, 42, '2023-07-04 09:00:00', '2023-07-04 10:00:00', 2, 1)");
  // A paused job marks the date it reached and waits again; when it resumes it reads that
  // mark back as text and walks on after it.
  store().writeRecalculation(1, 1, "2023-7-4 9:5:1.25");
  int id = 0;
  long source = 0;
  std::string start, stop, reached;
  store().readRecalculation(id, source, start, stop, reached);
  EXPECT_EQ(id, 1);
  EXPECT_EQ(reached, "2023-07-04 09:05:01.25");
  std::vector<param_info> rows;
  store().readParamInfo(source, reached, stop, rows);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].id, 2);
}

} // namespace
