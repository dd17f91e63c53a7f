// What the schema must do for the store's statements: the result partitions that follow the
// visualizations, the unique index by whose name a duplicate is recognised, and the columns
// whose shape the writers rely on.
#include <pqxx/pqxx>
#include <string>

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

  // The store's insert of one result, as the live path writes it.
  static std::string resultBaseInsert(int visualization_id, const std::string& date) {
    return "INSERT INTO RESULT_BASE (ID, PARAM_INFO_ID, RECEIPT_DATE, SOURCE, VALUE, "
           "STATUS_CALC, VISUALIZATION_ID, HAS_RAW_DATA) VALUES (nextval('result_base_id_seq'), "
           "1, TO_TIMESTAMP('" +
           date + "','yyyy-mm-dd hh24:mi:ss.ff6'), 42, 1.5, 0, " +
           std::to_string(visualization_id) + ", true)";
  }

  // The text of the error that a statement raises, or "" when it runs.
  std::string errorOf(const std::string& statement) {
    try {
      store().writeData(statement);
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

  // The service inserts into RESULT_BASE and reads and updates through the suffixed table.
  store().writeData(resultBaseInsert(5, "2023-7-4 9:5:1.25"));
  EXPECT_EQ(store().getValueInt("SELECT COUNT(*) FROM RESULT_5 WHERE VISUALIZATION_ID = 5 AND "
                                "RECEIPT_DATE = TO_TIMESTAMP('2023-7-4 9:5:1.25',"
                                "'yyyy-mm-dd hh24:mi:ss.ff6')"),
            1);
  EXPECT_EQ(store().getValueInt("SELECT COUNT(*) FROM RESULT_1234"), 0);
  store().writeData("UPDATE RESULT_5 SET VALUE = 2.5, STATUS_CALC = 1 WHERE RECEIPT_DATE = "
                    "TO_TIMESTAMP('2023-7-4 9:5:1.25','yyyy-mm-dd hh24:mi:ss.ff6')");
  EXPECT_EQ(scalar("SELECT value || '/' || status_calc || '/' || id FROM result_base"), "2.5/1/1");

  // A visualization renumbered by the operators gets a partition under its new id; the old
  // one keeps its history.
  exec("UPDATE visualization SET id = 6 WHERE id = 5");
  EXPECT_TRUE(isPartitionOfResultBase("result_6"));
  EXPECT_TRUE(isPartitionOfResultBase("result_5"));

  // Re-creating a deleted visualization finds its history where it was.
  exec("DELETE FROM visualization WHERE id = 1234");
  exec("INSERT INTO visualization (id, source, name_param) VALUES (1234, 42, 'SPEED')");
  EXPECT_TRUE(isPartitionOfResultBase("result_1234"));

  // A result for a visualization that does not exist has no place, and is refused.
  EXPECT_NE(errorOf(resultBaseInsert(77, "2023-7-4 9:5:1")), "");
}

TEST_F(Schema, DuplicateResultNamesTheUniqueIndexInItsError) {
  exec("INSERT INTO visualization (id, source, name_param) VALUES (31, 42, 'TEMP')");
  EXPECT_EQ(errorOf(resultBaseInsert(31, "2023-7-4 9:5:1.5")), "");
  const std::string duplicate = errorOf(resultBaseInsert(31, "2023-7-4 9:5:1.5"));
  EXPECT_NE(duplicate.find("result_visualization_id_index"), std::string::npos) << duplicate;
  // Another time of the same visualization, and the same time of another one, are no clash.
  EXPECT_EQ(errorOf(resultBaseInsert(31, "2023-7-4 9:5:1.500001")), "");
  exec("INSERT INTO visualization (id, source, name_param) VALUES (32, 42, 'TEMP')");
  EXPECT_EQ(errorOf(resultBaseInsert(32, "2023-7-4 9:5:1.5")), "");

  const std::string result_insert =
      "INSERT INTO RESULT (ID, PARAM_INFO_ID, RECEIPT_DATE, SOURCE, NAME_PARAM, VALUE, "
      "STATUS_CALC, STATUS_VECTOR, VISUALIZATION_ID, HAS_RAW_DATA) VALUES ( nextval('id_result'), "
      "1, TO_TIMESTAMP('2023-7-4 9:5:1','yyyy-mm-dd hh24:mi:ss.ff6'), 42, 'TEMP', NULL, 0, 0, "
      "31, true)";
  EXPECT_EQ(errorOf(result_insert), "");
  const std::string result_duplicate = errorOf(result_insert);
  EXPECT_NE(result_duplicate.find("result_visualization_id_index"), std::string::npos)
      << result_duplicate;
}

TEST_F(Schema, WorkTableAndBulkUpdateOfTheHistory) {
  // The shape of the middle and trend write-back: rows go to result_temp, one UPDATE joins
  // them to the history, then the work table is emptied.
  exec("INSERT INTO visualization (id, source, name_param) VALUES (40, 42, 'RMS')");
  store().writeData(resultBaseInsert(40, "2023-7-4 9:5:1"));
  store().writeData(resultBaseInsert(40, "2023-7-4 9:6:1"));
  store().writeData("INSERT INTO result_temp (V_ID, RECEIPT_DATE, VALUE) VALUES  (40, "
                    "TO_TIMESTAMP('2023-7-4 9:5:1','yyyy-mm-dd hh24:mi:ss.ff6'), 0.25),  (40, "
                    "TO_TIMESTAMP('2023-7-4 9:6:1','yyyy-mm-dd hh24:mi:ss.ff6'), NULL)");
  store().writeData("UPDATE RESULT_BASE SET middle=result_temp.value FROM result_temp WHERE "
                    "result_base.visualization_id IN (40, 40) AND "
                    "result_base.visualization_id=result_temp.v_id AND "
                    "result_base.receipt_date=result_temp.receipt_date");
  store().writeData("TRUNCATE TABLE result_temp");
  EXPECT_EQ(scalar("SELECT string_agg(coalesce(middle::text, 'NULL'), ',' ORDER BY receipt_date) "
                   "FROM result_40"),
            "0.25,NULL");
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM result_temp"), "0");
}

TEST_F(Schema, HardwareStatusStartsEmptyAndTakesEveryBit) {
  exec("INSERT INTO module (id, source) VALUES (1, 42)");
  for (const char* mask : {"4", "1", "2147483648"}) {
    store().writeData(std::string("UPDATE module SET hardware_status = (hardware_status | ") +
                      mask + ") WHERE source = 42");
  }
  EXPECT_EQ(scalar("SELECT hardware_status FROM module"), "2147483653");
}

TEST_F(Schema, ForecastCurveIsStoredAsBytesAndReadBackAsHex) {
  exec("INSERT INTO visualization (id, source, name_param) VALUES (50, 42, 'RMS_X')");
  // One record: 86401 seconds as 8 bytes, 1.0f as 4 bytes, both little-endian.
  const std::string record = "8151010000000000"
                             "0000803f";
  store().writeData("UPDATE visualization SET rul_data = E'\\\\x" + record + "' WHERE id = 50");
  EXPECT_EQ(store().getValueString("SELECT rul_data FROM visualization WHERE id = 50"),
            "\\x" + record);
  EXPECT_EQ(scalar("SELECT length(rul_data) FROM visualization WHERE id = 50"), "12");
}

TEST_F(Schema, SequencesGiveTheIdsOfInsertedRows) {
  store().writeData("INSERT INTO STATUS_ELEMENT (ID, SOURCE, STATUS, PARAM_INFO_ID, CHANNEL_ID, "
                    "CONTROL_POINT_ID) VALUES ( nextval('status_element_id_seq'), 42, 1.5, 7, "
                    "NULL, NULL)");
  store().writeData("INSERT INTO STATUS_AGGREGATE (ID, AGGREGATE_ID, STATUS, CALCULATED_AT) "
                    "VALUES ( nextval('status_aggregate_id_seq'), 3, 2, "
                    "TO_TIMESTAMP('2023-7-4 9:5:1','yyyy-mm-dd hh24:mi:ss.ff6'));");
  store().writeData("INSERT INTO NOTIFICATION (ID, SOURCE, MESSAGE_CODE, DIAGNOSTIC_MODE) VALUES "
                    "(nextval('id_seq_rec'), NULL, '27', false)");
  EXPECT_EQ(scalar("SELECT id FROM status_element"), "1");
  EXPECT_EQ(scalar("SELECT id FROM status_aggregate"), "1");
  EXPECT_EQ(scalar("SELECT id FROM notification"), "1");
  // The empty statement of a history write with nothing to write is accepted.
  EXPECT_NO_THROW(store().writeData(""));
}

TEST_F(Schema, MotorNameplateHoldsWhatWasTypedIn) {
  // The nameplate is converted by the reader, which reports a field it cannot read; the table
  // must accept such a field in the first place.
  exec("INSERT INTO motor (id, power, speed, i, u, p2, class_vibro) VALUES "
       "(1, '55', 'abc', '', NULL, '3', '2')");
  EXPECT_EQ(store().getValueString("SELECT SPEED FROM MOTOR WHERE ID=1"), "abc");
}

TEST_F(Schema, RecalculationTimesCompareWithReceiptDates) {
  exec("INSERT INTO param_info (id, source, type_param, receipt_date) VALUES "
       "(1, 42, 3, '2023-07-04 09:05:01.25'), (2, 42, 3, '2023-07-04 09:06:00')");
  exec("INSERT INTO recalculation (id, source, time_start, time_stop, state, control) VALUES "
       "(1, 42, '2023-07-04 09:00:00', '2023-07-04 10:00:00', 1, 1)");
  // A paused job resumes after the date it reached, read back as text and compared again.
  store().writeData("UPDATE RECALCULATION SET STATE = 1, TIME_CALCULATION='2023-07-04 "
                    "09:05:01.25' WHERE ID = 1");
  const std::string reached =
      store().getValueString("SELECT time_calculation FROM recalculation WHERE id = 1");
  EXPECT_EQ(reached, "2023-07-04 09:05:01.25");
  EXPECT_EQ(store().getValueInt("SELECT COUNT(*) FROM PARAM_INFO WHERE RECEIPT_DATE>'" + reached +
                                "' AND RECEIPT_DATE<'2023-07-04 10:00:00'"),
            1);
  EXPECT_EQ(store().getValueInt("SELECT id FROM recalculation WHERE state=1 AND control=1 "
                                "ORDER BY created_at ASC LIMIT 1"),
            1);
}

} // namespace
