// Notifications and defects of WorkPostgreSQL against the throwaway PostgreSQL: the repeat
// rules across the day before a notification's own time, ACTIVE_DAYS, the lookups behind
// system messages, closing, quotes in codes and aliases, and the defect record.
#include <map>
#include <string>

#include "OperationLogTest.h"

namespace {

class StoreTest : public OperationLogTest {
protected:
  int count(const std::string& condition) {
    return std::stoi(scalar("SELECT COUNT(*) FROM notification WHERE " + condition));
  }
};

// A notification at module 42, channel 10, control point 20 of organization "plant", raised
// by code with type and status as given.
struct Raise {
  std::string code;
  int type_message_id = 4;
  int status = 0;
  long source = 42;
  int gateway_id = 0;
  std::string additional_info;
  std::string organization_alias = "plant";
  int recommendation_id = 0;
  int channel_id = 10;
  int control_point_id = 20;
  bool diagnostic_mode = false;
  int visualization_id = 0;

  void at(WorkPostgreSQL& store, const std::string& date) const {
    store.notificationSave(code, source, date, status, gateway_id, additional_info, type_message_id,
                           organization_alias, recommendation_id, channel_id, control_point_id,
                           diagnostic_mode, visualization_id);
  }
};

class WorkPostgreSQLNotificationSave : public StoreTest {};

TEST_F(WorkPostgreSQLNotificationSave, OtherCodesAreWrittenOnceADayOpenOrClosed) {
  Raise gateway_lost;
  gateway_lost.code = "2";
  gateway_lost.at(store(), "2023-7-4 12:0:0");
  EXPECT_EQ(count("message_code = '2'"), 1);
  EXPECT_EQ(logText(), "write table notification, plant, error: 2\n");

  gateway_lost.at(store(), "2023-7-4 13:0:0");
  EXPECT_EQ(count("message_code = '2'"), 1) << "a repeat within the day";
  EXPECT_EQ(logText(), "write table notification, plant, error: 2\n") << "a skip logs nothing";

  // The day is counted back from the notification's own time, and includes its first instant.
  gateway_lost.at(store(), "2023-7-5 12:0:0");
  EXPECT_EQ(count("message_code = '2'"), 1);
  // A replayed older notification sees the later row within its window as well.
  gateway_lost.at(store(), "2023-7-2 12:0:0");
  EXPECT_EQ(count("message_code = '2'"), 1);

  gateway_lost.at(store(), "2023-7-5 12:0:1");
  ASSERT_EQ(count("message_code = '2'"), 2) << "a day and a second later";
  EXPECT_EQ(scalar("SELECT active_days FROM notification WHERE date_of_creation = "
                   "'2023-07-05 12:00:01'"),
            "1")
      << "one row of the place still open";
  EXPECT_EQ(scalar("SELECT active_days FROM notification WHERE date_of_creation = "
                   "'2023-07-04 12:00:00'"),
            "")
      << "none open before the first";

  // A closed row blocks a repeat as well.
  exec("UPDATE notification SET status = 1");
  gateway_lost.at(store(), "2023-7-5 18:0:0");
  EXPECT_EQ(count("message_code = '2'"), 2);

  // Another place, alias or visualization is another key.
  Raise elsewhere = gateway_lost;
  elsewhere.channel_id = 11;
  elsewhere.at(store(), "2023-7-5 18:0:0");
  elsewhere.organization_alias = "yard";
  elsewhere.at(store(), "2023-7-5 18:0:0");
  elsewhere.visualization_id = 5;
  elsewhere.at(store(), "2023-7-5 18:0:0");
  elsewhere.type_message_id = 5;
  elsewhere.at(store(), "2023-7-5 18:0:0");
  EXPECT_EQ(count("message_code = '2'"), 6);
}

TEST_F(WorkPostgreSQLNotificationSave, LostConnectionIsRaisedAgainOnceClosed) {
  for (const std::string code : {"1", "1025", "1061"}) {
    SCOPED_TRACE("code " + code);
    const std::string rows = "message_code = '" + code + "'";
    Raise lost;
    lost.code = code;
    lost.at(store(), "2023-7-4 12:0:0");
    lost.at(store(), "2023-7-4 13:0:0");
    EXPECT_EQ(count(rows), 1) << "an open row within the day blocks";

    exec("UPDATE notification SET status = 1 WHERE " + rows);
    lost.at(store(), "2023-7-4 14:0:0");
    ASSERT_EQ(count(rows), 2) << "a closed row does not";
    EXPECT_EQ(scalar("SELECT active_days FROM notification WHERE " + rows +
                     " AND date_of_creation = '2023-07-04 14:00:00'"),
              "");
    lost.at(store(), "2023-7-4 15:0:0");
    EXPECT_EQ(count(rows), 2);

    // Two days on, the open row of 14:00 is out of the window but still counts as open.
    lost.at(store(), "2023-7-6 15:0:0");
    ASSERT_EQ(count(rows), 3);
    EXPECT_EQ(scalar("SELECT active_days FROM notification WHERE " + rows +
                     " AND date_of_creation = '2023-07-06 15:00:00'"),
              "1");
    lost.at(store(), "2023-7-8 15:0:0");
    EXPECT_EQ(scalar("SELECT active_days FROM notification WHERE " + rows +
                     " AND date_of_creation = '2023-07-08 15:00:00'"),
              "2");
  }
}

TEST_F(WorkPostgreSQLNotificationSave, RestoredDataErrorAndTypeOneAreWrittenEveryTime) {
  Raise restored;
  restored.code = "8";
  restored.status = 1;
  Raise data_error;
  data_error.code = "26";
  data_error.type_message_id = 2;
  data_error.status = 1;
  Raise informative;
  informative.code = "2";
  informative.type_message_id = 1;
  for (int k = 0; k < 3; ++k) {
    restored.at(store(), "2023-7-4 12:0:0");
    data_error.at(store(), "2023-7-4 12:0:0");
    informative.at(store(), "2023-7-4 12:0:0");
  }
  EXPECT_EQ(count("message_code = '8'"), 3);
  EXPECT_EQ(count("message_code = '26'"), 3);
  EXPECT_EQ(count("type_message_id = 1"), 3);
  EXPECT_EQ(count("message_code IN ('8', '26') AND active_days IS NOT NULL"), 0)
      << "closed rows are not counted";
  EXPECT_EQ(scalar("SELECT string_agg(COALESCE(active_days::text, 'null'), ',' ORDER BY id) "
                   "FROM notification WHERE type_message_id = 1"),
            "null,1,2")
      << "open rows of the same place are";
}

TEST_F(WorkPostgreSQLNotificationSave, AbsentKeysAreNullInTheLookUpAndTheRow) {
  Raise bare;
  bare.code = "24";
  bare.type_message_id = 5;
  bare.source = 0;
  bare.organization_alias = "";
  bare.channel_id = 0;
  bare.control_point_id = 0;
  bare.diagnostic_mode = true;
  bare.at(store(), "2023-7-4 12:0:0.5");
  bare.at(store(), "2023-7-4 12:30:0");
  ASSERT_EQ(count("true"), 1) << "the NULL forms of the look-up find the first row";
  const pqxx::result rows =
      query("SELECT source, gateway_id, date_of_creation, additional_info, organization_alias, "
            "recommendation_id, channel_id, control_point_id, visualization_id, "
            "diagnostic_mode, status, type_message_id FROM notification");
  for (const int column : {0, 1, 3, 4, 5, 6, 7, 8}) {
    SCOPED_TRACE("column " + std::to_string(column));
    EXPECT_TRUE(rows[0][column].is_null());
  }
  EXPECT_STREQ(rows[0][2].c_str(), "2023-07-04 12:00:00.5");
  EXPECT_STREQ(rows[0][9].c_str(), "t");
  EXPECT_STREQ(rows[0][10].c_str(), "0");
  EXPECT_STREQ(rows[0][11].c_str(), "5");
  EXPECT_EQ(logText(), "write table notification, , error: 24\n");

  Raise full;
  full.code = "12";
  full.gateway_id = 3;
  full.additional_info = "clock 5 min ahead, it's the gateway's";
  full.organization_alias = "O'Neil";
  full.recommendation_id = 80;
  full.visualization_id = 5;
  full.at(store(), "2023-7-4 12:0:0");
  full.at(store(), "2023-7-4 12:10:0");
  ASSERT_EQ(count("message_code = '12'"), 1) << "quotes do not break the look-up";
  EXPECT_EQ(scalar("SELECT gateway_id || '|' || additional_info || '|' || organization_alias || "
                   "'|' || recommendation_id || '|' || visualization_id || '|' || diagnostic_mode "
                   "FROM notification WHERE message_code = '12'"),
            "3|clock 5 min ahead, it's the gateway's|O'Neil|80|5|false");
}

class WorkPostgreSQLSystemNotification : public StoreTest {
protected:
  void messages() {
    exec("INSERT INTO list_of_messages (code, visible) VALUES ('13', true), ('12', false), "
         "('x''1', true);"
         "INSERT INTO recommendation (id, message_code, type_message_id, enabled) VALUES "
         "(80, '13', 4, true), (81, '13', 2, true), (82, '13', 4, false), (83, '14', NULL, true), "
         "(84, 'x''1', 4, true)");
  }
};

TEST_F(WorkPostgreSQLSystemNotification, SwitchedOffAndUnknownCodesAreDropped) {
  messages();
  store().notificationSystemSave("12", 42, "2023-7-4 12:0:0", 1, 0, "", 4, "plant", 10, 20);
  store().notificationSystemSave("9", 42, "2023-7-4 12:0:0", 1, 0, "", 4, "plant", 10, 20);
  EXPECT_EQ(count("true"), 0);
  EXPECT_EQ(logText(), "");
  EXPECT_FALSE(store().isMessageActive("12"));
  EXPECT_FALSE(store().isMessageActive("9"));
  EXPECT_TRUE(store().isMessageActive("13"));
}

TEST_F(WorkPostgreSQLSystemNotification, ActiveCodeCarriesTheRecommendationOfItsType) {
  messages();
  store().notificationSystemSave("13", 42, "2023-7-4 12:0:0", 1, 3, "late by 2 h", 4, "plant", 10,
                                 20);
  const pqxx::result rows =
      query("SELECT recommendation_id, diagnostic_mode, visualization_id, gateway_id, "
            "additional_info, status FROM notification");
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_STREQ(rows[0][0].c_str(), "80") << "the enabled recommendation of type 4";
  EXPECT_STREQ(rows[0][1].c_str(), "f");
  EXPECT_TRUE(rows[0][2].is_null());
  EXPECT_STREQ(rows[0][3].c_str(), "3");
  EXPECT_STREQ(rows[0][4].c_str(), "late by 2 h");
  EXPECT_STREQ(rows[0][5].c_str(), "1");

  EXPECT_EQ(store().getRecommendationCode("13", 2), 81);
  EXPECT_EQ(store().getRecommendationCode("13", 5), 0);
  EXPECT_EQ(store().getRecommendationCode("14", 0), 83) << "type 0 asks for any type";
  EXPECT_EQ(store().getRecommendationCode("14", 4), 0) << "a type asks for exactly that type";
  EXPECT_EQ(store().getRecommendationCode("15", 0), 0);

  // A code without a recommendation gives a row without one.
  exec("INSERT INTO list_of_messages (code, visible) VALUES ('25', true)");
  store().notificationSystemSave("25", 0, "2023-7-4 12:0:0", 1, 0, "", 5, "plant", 0, 0);
  EXPECT_EQ(count("message_code = '25' AND recommendation_id IS NULL"), 1);
}

TEST_F(WorkPostgreSQLSystemNotification, RecommendationIsActiveForItsTypeOrForAll) {
  messages();
  EXPECT_TRUE(store().isRecommendationActive(80, 4));
  EXPECT_FALSE(store().isRecommendationActive(80, 2));
  EXPECT_TRUE(store().isRecommendationActive(80, 0)) << "type 0 does not filter";
  EXPECT_TRUE(store().isRecommendationActive(83, 2)) << "no type applies to every type";
  EXPECT_FALSE(store().isRecommendationActive(82, 4)) << "disabled";
  EXPECT_FALSE(store().isRecommendationActive(99, 0));
}

TEST_F(WorkPostgreSQLSystemNotification, QuoteInCodeAndAliasGoesThroughEveryStep) {
  messages();
  EXPECT_TRUE(store().isMessageActive("x'1"));
  EXPECT_EQ(store().getRecommendationCode("x'1", 0), 84);
  store().notificationSystemSave("x'1", 42, "2023-7-4 12:0:0", 0, 0, "it's late", 4, "O'Neil", 10,
                                 20);
  store().notificationSystemSave("x'1", 42, "2023-7-4 13:0:0", 0, 0, "it's late", 4, "O'Neil", 10,
                                 20);
  ASSERT_EQ(count("true"), 1);
  EXPECT_EQ(scalar("SELECT message_code || '|' || organization_alias || '|' || "
                   "additional_info || '|' || recommendation_id FROM notification"),
            "x'1|O'Neil|it's late|84");

  store().setNotificationStatus("x'1", 42, "", 1, 0, 4, "O'Neil", 10, 20);
  EXPECT_EQ(count("status = 1"), 1);
  EXPECT_EQ(logText(), "write table notification, O'Neil, error: x'1\n"
                       "set status notification, 42, message_code: x'1\n");
}

class WorkPostgreSQLNotificationStatus : public StoreTest {};

TEST_F(WorkPostgreSQLNotificationStatus, ClosesOpenRowsOfThePlaceWithTheAliasAsText) {
  exec("INSERT INTO notification (id, source, gateway_id, type_message_id, status, "
       "organization_alias, channel_id, control_point_id, visualization_id, message_code) "
       "VALUES "
       "(1, 42, NULL, 4, 0, 'plant', 10, 20, NULL, '1'), "
       "(2, 42, NULL, 4, 0, 'plant', 10, 20, 5, '1'), "    // any visualization
       "(3, 42, NULL, 4, 0, NULL, 10, 20, NULL, '1'), "    // no alias
       "(4, 42, NULL, 4, 0, '', 10, 20, NULL, '1'), "      // the empty alias
       "(5, 43, NULL, 4, 0, 'plant', 10, 20, NULL, '1'), " // another module
       "(6, 42, 3, 4, 0, 'plant', 10, 20, NULL, '1'), "    // through a gateway
       "(7, 42, NULL, 2, 0, 'plant', 10, 20, NULL, '1'), " // another type
       "(8, 42, NULL, 4, 0, 'plant', 10, NULL, NULL, '1'), "
       "(9, 42, NULL, 4, 0, 'plant', 10, 20, NULL, '2'), "
       "(10, 42, NULL, 4, 5, 'plant', 10, 20, NULL, '1')"); // not open
  const auto closed = [&] {
    return scalar("SELECT string_agg(id::text, ',' ORDER BY id) FROM notification WHERE "
                  "status = 1");
  };
  store().setNotificationStatus("1", 42, "2023-7-4 12:0:0", 1, 0, 4, "plant", 10, 20);
  EXPECT_EQ(closed(), "1,2");
  EXPECT_EQ(logText(), "set status notification, 42, message_code: 1\n");

  store().setNotificationStatus("1", 42, "", 1, 0, 4, "", 10, 20);
  EXPECT_EQ(closed(), "1,2,4") << "the empty alias matches the empty text, not NULL";

  store().setNotificationStatus("1", 42, "", 1, 3, 4, "plant", 10, 0);
  EXPECT_EQ(closed(), "1,2,4") << "a gateway and a missing point are two conditions";
  store().setNotificationStatus("1", 42, "", 1, 0, 4, "plant", 10, 0);
  EXPECT_EQ(closed(), "1,2,4,8");
  store().setNotificationStatus("1", 42, "", 1, 3, 4, "plant", 10, 20);
  EXPECT_EQ(closed(), "1,2,4,6,8");
  EXPECT_EQ(scalar("SELECT status FROM notification WHERE id = 10"), "5");
}

class WorkPostgreSQLDefects : public StoreTest {};

TEST_F(WorkPostgreSQLDefects, SmallestDefectStandsForTheMeasurementAndARepeatReplacesIt) {
  const auto record = [&](int id) {
    return scalar("SELECT defect_code || ' ' || defect_type FROM defects WHERE id = " +
                  std::to_string(id));
  };
  store().writeDefects(11, {{7, 1}, {3, 2}, {5, 4}});
  EXPECT_EQ(record(11), "3 2");
  EXPECT_EQ(logText(), "write defect\n");

  store().writeDefects(11, {{9, 6}});
  EXPECT_EQ(record(11), "9 6");
  store().writeDefects(12, {{1, 1}});

  // A measurement recomputed without defects loses its record.
  store().writeDefects(11, {});
  EXPECT_EQ(record(11), "");
  EXPECT_EQ(record(12), "1 1");
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM defects"), "1");
  EXPECT_EQ(logText(), "write defect\nwrite defect\nwrite defect\n");
}

} // namespace
