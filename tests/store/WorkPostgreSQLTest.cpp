// WorkPostgreSQL against the throwaway PostgreSQL. Records read by the store and rows written by
// it are compared whole, as text, so that one expectation checks every column and its place.
#include <clocale>
#include <cmath>
#include <locale>
#include <map>
#include <sstream>
#include <thread>
#include <unistd.h>

#include "support/StoreTest.h"

// Fields joined by "|", numbers with all the digits of a double.
template <typename... T> static std::string cat(const T&... fields) {
  std::ostringstream out;
  out.precision(17);
  const char* separator = "";
  ((out << separator << fields, separator = "|"), ...);
  return out.str();
}

// The fields of what the reads fill, records in the order of their statements, a vector as
// "[items]"; list() joins items by ",", sorted where the server gives them in no fixed order.
// clang-format off
template <typename C> static std::string list(const C& items, bool sorted = false);
template <typename T> static std::string fields(const T& value) { return cat(value); }
template <typename T> static std::string fields(const std::vector<T>& v) {
  return "[" + list(v) + "]";
}
template <typename K, typename V> static std::string fields(const std::pair<K, V>& x) {
  return cat(x.first, x.second);
}
#define FIELDS(T, ...) static std::string fields(const T& x) { return cat(__VA_ARGS__); }
FIELDS(param_info, x.id, x.source, x.type_mod, x.type_param, x.receipt_date, x.tu_error,
       x.param_settings, x.module_config, x.kind)
FIELDS(raw, x.param_type_id, x.c_type, x.sub_channel, x.data, x.settings)
FIELDS(module_data, x.id, x.source, x.type_module, x.gateway_id, x.broadcasting_period, x.utc_value,
       x.organization_alias, x.connection_status, x.data_in_utc_0)
FIELDS(gateway, x.id, x.node_id, x.sync_time, x.organization_alias, x.utc_value,
       x.connection_status_control, x.connection_status)
FIELDS(module_param, x.name, x.value, x.type_module, x.type_param, x.module_revision,
       x.type_settings, x.sub_1_packet)
FIELDS(channel, x.id, x.control_point_id, x.raw_param, x.axis_order, x.active)
FIELDS(visualization, x.id, x.source, x.name_param, x.green, x.yellow, x.orange, x.kz, x.active,
       x.middle, x.trend, x.channel_id, x.control_point_id, x.latest_middle_value,
       x.latest_raw_value, x.rul_active, x.type_corridor, x.corridor_zero, x.corridor_active,
       x.type_param, x.message_settings, x.rul_data, x.value_at)
// clang-format on
template <typename C> static std::string list(const C& items, bool sorted) {
  std::vector<std::string> texts;
  for (const auto& item : items)
    texts.push_back(fields(item));
  if (sorted)
    std::sort(texts.begin(), texts.end());
  std::string all;
  for (const std::string& text : texts)
    all += (all.empty() ? "" : ",") + text;
  return all;
}

// Module 42 bound to point 20 of machine 30 of "plant", module 43 to point 22 of machine 31 of
// "bare", which has no offset, module 44 bound but inactive, 45 and 46 with configurations that
// carry no word; two gateways; the visualizations of module 42; messages and recommendations.
static const char* const kPlant = R"(
INSERT INTO organization_object VALUES ('plant', 'UTC+3:00', 1), ('yard', 'GMT-2:30', NULL),
  ('bare', NULL, 2), ('O''Neil', NULL, 0);
INSERT INTO observed_node VALUES (4, 'plant'), (5, 'yard'), (6, 'bare');
INSERT INTO gateway VALUES (3, 4, '2023-07-04 09:05:01', 1, 2), (6, 5, NULL, 2, NULL);
INSERT INTO aggregate VALUES (30, 4, 2, 3, 1, 90, '2023-01-02 03:04:05', 'Pump');
INSERT INTO aggregate VALUES (31, 6);
INSERT INTO control_point VALUES (20, 30, 0.5, 2.5), (21, 30, NULL, NULL), (22, 31, 1, 1);
INSERT INTO channel VALUES (10, 42, 'AB', 'XYZ'), (11, 42, NULL, NULL), (12, 43, '', ''),
  (13, 44, '', '');
INSERT INTO channel_contol_point VALUES (10, 20, true), (10, 21, NULL), (12, 22, true),
  (13, 22, false);
INSERT INTO module VALUES (7, 42, 10, 15, 3, '0x1F', true, 2, 4, false),
  (8, 43, 11, NULL, 3, '0x', false, NULL, NULL, NULL), (9, 44, 12, 5, NULL, NULL, NULL, NULL, 0,
  true), (10, 45, 13, NULL, NULL, '7', NULL, NULL, NULL, NULL), (11, 46, 14, NULL, NULL, '0xZZ',
  false, 4, NULL, NULL);
INSERT INTO module_param VALUES ('gain', 2.5, 10, 3, 1, 4, 'A'),
  ('offset', NULL, 10, 5, 1, NULL, NULL), ('other', 1, 10, 3, 2, 0, '');
INSERT INTO observed_param VALUES ('SKZ', 2), ('TEMP', NULL);
INSERT INTO visualization VALUES (101, 42, 'SKZ', 1.5, 2.5, 4.5, 0.25, true, false, true, true,
  true, 10, 20, 1, 3, 0.1, 3.5, NULL, NULL, '{}', '\x0102', '2023-07-04 09:05:01.5');
INSERT INTO visualization (id, source, name_param, type_param) VALUES (5, 42, 'SKZ', 1),
  (6, 42, 'TEMP', 2), (103, 43, 'SKZ', 1);
INSERT INTO list_of_messages VALUES ('27', true), ('13', true), ('12', false), ('x''1', true);
INSERT INTO recommendation VALUES (70, '27', 2, true), (80, '13', 4, true), (81, '13', 2, true),
  (82, '13', 4, false), (83, '14', NULL, true), (84, 'x''1', 4, true))";

class Store : public vek_test::StoreTest {
protected:
  void SetUp() override {
    StoreTest::SetUp();
    db = &store();
    connected = logText().size();
    exec(kPlant);
  }
  // What the operations logged after the store's line about its connection.
  std::string opLog() const { return logText().substr(connected); }
  // The rows of the statements (split at ";"), fields joined by "|", NULL written NULL, each
  // row ending in "\n".
  std::string rows(const std::string& statements) {
    std::string text;
    std::istringstream in(statements);
    for (std::string statement; std::getline(in, statement, ';');)
      for (const auto& row : query(statement))
        for (const auto& field : row)
          text += (field.is_null() ? "NULL" : field.c_str()) +
                  std::string(field.num() + 1 == row.size() ? "\n" : "|");
    return text;
  }
  // The administrator ends the store's session, as a restarting server does.
  void endSession() {
    exec("SELECT pg_terminate_backend(" + cat(db->getValueInt("SELECT pg_backend_pid()")) +
         ", 5000)");
  }
  // A result at module 42, channel 10 and point 20, by default timed to a fraction of a second.
  static calc_result result(int id, std::vector<result_param> params,
                            const char* date = "2023-7-4 9:5:1.25", int status = 1,
                            int vector = 0x20000000, bool raw = false) {
    return {id, date, 42, 10, 20, status, vector, {}, params, raw};
  }
  static result_param param(const std::string& name, float value, int visualization_id) {
    return {name, value, NAN, NAN, NAN, visualization_id, ""};
  }
  WorkPostgreSQL* db = nullptr;

private:
  std::size_t connected = 0;
};

class StoreReads : public Store {};

TEST_F(StoreReads, GenericQueriesAndMeasurementRows) {
  // Every readable field replaces the value, a NULL leaves it, a text that is no number gives
  // 0, and what an int leaves unread (".5" of "12.5") stands in front of the next field.
  std::string got;
  for (const char* sql :
       {"SELECT MAX(param_info_id) FROM math_history", "SELECT '12.5'", "SELECT 4, -5",
        "SELECT x FROM (VALUES (1), (3)) v(x)", "SELECT x FROM (VALUES (7), (NULL)) v(x)",
        "SELECT 9, 'abc'", "SELECT '12.5', '7'"})
    got += cat(db->getValueInt(sql)) + ",";
  std::vector<std::vector<int>> numbers{{99}};
  db->getValue("SELECT 1, NULL::integer, 3 UNION ALL SELECT 4, 5, NULL", numbers);
  db->getValue("SELECT '3.5', '4' UNION ALL SELECT '8', '9'", numbers);
  std::vector<std::string> texts{"kept"};
  db->getValue("SELECT x, 'y' FROM (VALUES ('a'), (NULL), ('O''Brien')) v(x)", texts);
  std::vector<std::vector<double>> table{{-1.0}};
  db->readDataTable("SELECT 1.5::float8, NULL, 3 UNION ALL SELECT -2.25, 0.1, 1e-300", table);
  EXPECT_EQ(got + db->getValueString("SELECT x, 'y' FROM (VALUES ('a'), ('b')) v(x)") + "," +
                db->getValueString("SELECT x FROM (VALUES ('a'), (NULL)) v(x)") + "," +
                list(numbers) + "," + list(texts) + "," + list(table),
            "0,12,-5,3,7,0,0,b,,[99],[1,0,3],[4,5,0],[3,0],[0,0],kept,a,,O'Brien,[-1],[1.5,0,3],"
            "[-2.25,0.10000000000000001,1e-300]");
  db->writeData("INSERT INTO param_info VALUES (1, 42, 10, 3, '2023-07-04 10:00', 'T', '[]', '{}',"
                " 1), (5, 9007199254740993, 12, 1, '2023-07-04 10:45:00.5', 'a', 'b', 'c', 2)");
  exec("INSERT INTO param_info VALUES (2, 42, 10, 0, '2023-07-04 11:00'), (3, 42, 10, 3, "
       "'2023-07-04 12:00'), (4, 42, 11, 2, '2023-07-04 10:30'), (6, 42, 10, 3, "
       "'2023-07-04 09:00'), (7, 42, 10, 1, '2023-07-04 09:30');"
       "INSERT INTO fu_raw VALUES (9, 1, 2, 'X', '0x0A0B', '{}'), (9, NULL, 3, NULL, NULL, NULL),"
       "(10, 5, 5, '', '', '')");
  // A NULL number stays; only a row sets the id, 0 marks a gap. A range lies strictly between
  // its bounds, leaves telemetry rows out and goes in time order; source 0 takes all modules.
  std::vector<param_info> one(3), range(1);
  db->readParamInfo(5, one[0]);
  one[1] = one[0];
  db->readParamInfo(4, one[1]);
  db->readParamInfo(8, one[2]);
  db->readParamInfo(42, "2023-07-04 09:00:00", "2023-07-04 12:00:00", range);
  db->readParamInfo(0, "2023-07-04 10:40:00", "2023-07-04 10:50:00", range);
  std::vector<raw> pieces(1);
  db->readRaw(9, pieces);
  const std::string fifth = "5|9007199254740993|12|1|2023-07-04 10:45:00.5|a|b|c|2,";
  EXPECT_EQ(list(one) + "," + list(range) + "," + list(pieces, true) + "," + opLog(),
            fifth +
                "4|42|11|2|2023-07-04 10:30:00||||2,0|0|0|0|||||0,0|0|0|0|||||0,7|42|10|1|"
                "2023-07-04 09:30:00||||0,1|42|10|3|2023-07-04 10:00:00|T|[]|{}|1,4|42|11|2|"
                "2023-07-04 10:30:00||||0," +
                fifth +
                "0|0|||,0|3|||,1|2|X|0x0A0B|{},reading data: ID = 5\nreading data: ID = 4\n"
                "reading data: ID = 8\n");
}

TEST_F(StoreReads, ModulesOfAMeasurementAndOfTheConnectivityWatch) {
  // config|type|gateway|revision|period|multichannel|machine|offset|alias|id
  const std::pair<long, const char*> cases[] = {
      {42, "31|10|3|2|15|1|30|+3:00|plant|7"},
      {43, "5|11|3|-1|-1|0|31||bare|8"},              // a bare prefix; no offset
      {44, "5|12|-1|-1|5|1|-1|old|old|9"},            // NULLs leave; the binding is inactive
      {45, "5|13|-1|-1|-1|1|-1|old|old|10"},          // no longer than the prefix
      {99, "2147483648|-1|-1|-1|-1|1|-1|old|old|-1"}, // no row: the word the check rejects
      {46, "5|14|-1|4|-1|0|-1|old|old|11"}};          // no hexadecimal word: reported
  for (const auto& [source, expected] : cases) {
    unsigned int config = 5;
    int type = -1, gateway = -1, revision = -1, period = -1, aggregate = -1, id = -1;
    bool multichannel = true;
    std::string utc = "old", alias = "old";
    db->readModule(source, config, type, gateway, revision, period, multichannel, aggregate, utc,
                   alias, id);
    EXPECT_EQ(cat(config, type, gateway, revision, period, multichannel, aggregate, utc, alias, id),
              expected);
  }
  std::vector<module_data> modules(9), of_gateway(1);
  db->readModule(modules);
  db->getModulesGateway(3, of_gateway);
  std::vector<gateway> gateways(1);
  db->getGateway(2, gateways);
  db->getGateway(1, gateways);
  std::map<std::string, int> organizations{{"yard", 9}};
  db->getOrganization(organizations);
  EXPECT_EQ(list(modules, true) + "," + list(of_gateway) + "," + list(gateways) + "," +
                list(organizations) + "," + opLog(),
            "10|45|13|0|0|||0|1,11|46|14|0|0|||0|1,7|42|10|3|15|+3:00|plant|4|0,8|43|11|3|0|+3:00|"
            "plant|0|1,9|44|12|0|5|||0|1,7|42|10|0|15|+3:00|plant|4|0,0|0||||0|0,6|5||yard|-2:30|"
            "2|0,3|4|2023-07-04 09:05:01|plant|+3:00|1|2,O'Neil|0,bare|2,plant|1,yard|9,Invalid "
            "argument 'config' in the table MODULE\n");
}

TEST_F(StoreReads, PlantAroundAControlPointAndEquipmentTypedInByHand) {
  // Entries already in a map stay. The nameplate is text; the reader converts it field by field
  // and stops at a bad one. After a lost session both equipment reads report and return.
  std::vector<module_param> params(1);
  db->readModuleParam(10, 1, params);
  std::map<int, float> points{{21, 7.0f}, {1, 1.0f}}, fresh;
  db->readControlPoint(30, points);
  db->readControlPoint(30, fresh);
  std::vector<channel> channels(1);
  std::vector<visualization> items(1);
  db->readChannel(42, channels);
  db->readVisualization(42, items);
  int n[8] = {};
  float status = -1.0f;
  for (const int point : {20, 21, 99}) // a NULL and no row leave the status
    db->readStatusElement(point, status);
  std::string got, texts[3];
  db->readAggregate(21, n[0], n[1], n[2], n[3], n[4], n[5], texts[0], texts[1], texts[2]);
  EXPECT_EQ(cat(n[0], n[1], n[2], n[3], n[4], n[5], texts[0], texts[1], texts[2], status) + "," +
                list(params, true) + "," + list(points) + "," + list(fresh) + "," +
                list(channels, true) + "," + list(items, true),
            "30|4|2|3|1|90|2023-01-02 03:04:05|Pump|plant|2.5,"
            "gain|2.5|10|3|1|4|A,offset|0|10|5|1|0|,|0|0|0|0|0|,1|1,20|0.5,21|7,20|0.5,21|0,0|0||"
            "|1,10|20|AB|XYZ|1,10|21|AB|XYZ|0,11|0|||0,0|0||0|0|0|0|0|0|0|0|0|0|0|0|1|0|0|0|||,101|"
            "42|SKZ|1.5|2.5|4.5|0.25|1|0|1|10|20|3.5|0.10000000000000001|1|2|3|1|1|{}|\\x0102|2023-"
            "07-04 09:05:01.5,5|42|SKZ|0|0|0|0|0|0|0|0|0|0|0|0|2|0|0|1|||,6|42|TEMP|0|0|0|0|0|0|0|"
            "0|0|0|0|0|1|0|0|2|||");
  exec("INSERT INTO motor VALUES (1, '55', NULL, '12', '', '3', '2'), (2, '75', 'abc', '9', "
       "'380', '4', '1'); INSERT INTO bearing VALUES (1, 7.9375, 9, 2, 25.5, 52.25, 12.5)");
  for (const int id : {1, 2, 3}) {
    std::fill(n, n + 6, -1);
    db->readMotor(id, n[0], n[1], n[2], n[3], n[4], n[5]);
    got += cat(n[0], n[1], n[2], n[3], n[4], n[5]) + ",";
  }
  double b[4] = {0.0, 0.0, 0.0, -1.0};
  db->readBearing(1, b[0], n[6], n[7], b[1], b[2], b[3]);
  got += cat(b[0], n[6], n[7], b[1], b[2], b[3]) + ",";
  endSession();
  unsigned int config = 0;
  bool multichannel = false;
  b[0] = 1.0;
  n[0] = 0;
  db->readBearing(1, b[0], n[1], n[1], b[1], b[2], b[3]);
  db->readModule(42, config, n[0], n[1], n[1], n[1], multichannel, n[1], texts[0], texts[1], n[1]);
  EXPECT_EQ(got + cat(b[0], n[0]),
            "55|-1|12|-1|3|2,75|-1|-1|-1|-1|-1,-1|-1|-1|-1|-1|-1,7.9375|9|2|25.5|52.25|12.5,1|0");
  EXPECT_THROW(db->getValueInt("SELECT 1"), pqxx::broken_connection);
  const std::string log = opLog(), tail = "WHERE SOURCE=42]\n";
  EXPECT_EQ(log.find("Invalid data in the table MOTOR\nInvalid data in the table BEARING\n"), 0u);
  EXPECT_NE(log.find("Exception on statement:[SELECT TYPE_MODULE"), std::string::npos) << log;
  EXPECT_EQ(log.substr(log.size() - tail.size()), tail) << log;
}

class StoreWrites : public Store {};

TEST_F(StoreWrites, ResultsAreWrittenOnceUpdatedOnRepeatAndADuplicateRaisesMessage27) {
  // The live path goes straight to the insert; a replay looks first and updates in place. A live
  // repeat meets the unique index, which names itself in the error; the rest of the result is
  // not written. A result without a partition is refused, and that is no duplicate.
  db->writeResultBase("plant", result(11, {param("SKZ", 1.5f, 5), param("TEMP", 2.5f, 6)}), false);
  db->writeResultBase("plant", result(12, {param("TEMP", INFINITY, 6)}, "2023-7-4 9:5:2", 0), true);
  db->writeResultBase("plant", result(12, {param("TEMP", 3.75f, 6)}, "2023-7-4 9:5:1.25", 0), true);
  db->writeResultBase("plant", result(13, {}), true);
  db->writeResultBase("O'Neil", result(14, {param("SKZ", 9.5f, 5), param("TEMP", 8.5f, 6)}), false);
  EXPECT_THROW(db->writeResultBase("plant", result(15, {param("X", 1.0f, 7)}), false),
               pqxx::sql_error);
  // The histories clear the values first and append to the other outputs; the series by id
  // leaves rows without a value out.
  std::vector<std::string> dates{"old"};
  std::vector<long> ids{-1};
  std::vector<int> param_info_ids{-1}, visualization_ids{-1}, int_ids{-1};
  std::vector<double> values{-1.0, -2.0};
  const std::string clause = "WHERE VISUALIZATION_ID = 6 ORDER BY RECEIPT_DATE";
  db->getArrayResult(clause, "VALUE", dates, ids, values);
  std::string got = cat(list(ids), list(dates), list(values)) + ",";
  db->getArrayResultId(clause, "VALUE", param_info_ids, dates, ids, values);
  got += cat(list(param_info_ids), list(ids), dates.back(), list(values)) + ",";
  db->getArrayResultFRM(clause, param_info_ids, values);
  got += cat(list(param_info_ids), list(values)) + ",";
  db->readResult("ORDER BY ID", visualization_ids, param_info_ids, dates, int_ids, values);
  EXPECT_EQ(rows("SELECT *, tableoid::regclass FROM result_base ORDER BY id; SELECT * FROM "
                 "notification") +
                got +
                cat(list(visualization_ids), list(param_info_ids), list(int_ids), list(values),
                    dates.size(), dates.back()),
            "1|11|5|2023-07-04 09:05:01.25|42|1.5|1|f|NULL|NULL|NULL|result_5\n2|11|6|2023-07-04 "
            "09:05:01.25|42|3.75|0|f|NULL|NULL|NULL|result_6\n3|12|6|2023-07-04 09:05:02|42|NULL|0|"
            "f|NULL|NULL|NULL|result_6\n1|42|NULL|2023-07-04 09:05:01.25|NULL|2|0|NULL|O'Neil|70|"
            "10|20|NULL|27|f\n-1,2,3|old,2023-07-04 09:05:01.25,2023-07-04 09:05:02|3.75,0,-1,11|"
            "-1,2,3,2|2023-07-04 09:05:01.25|3.75,-1,11,11,12|3.75,0,-1,5,6,6|-1,11,11,12,11,11,12|"
            "-1,1,2,3|1.5,3.75,0|7|2023-07-04 09:05:02");

  // A repeat refreshes its parameters and adds missing ones. Another measurement at the same
  // time: a lone taken parameter leaves nothing to insert, a free one beside a taken one is
  // written; all of several taken leave an insert without rows, which the server refuses; two
  // of one visualization pass the look-up and meet in the index.
  db->writeResult("plant", result(11, {param("SKZ", 1.5f, 5), param("O'Brien's", 2.5f, 8)}));
  db->writeResult("plant", result(11, {param("SKZ", NAN, 5), param("TEMP", 4.5f, 6)},
                                  "2023-7-4 9:5:1.25", 1, 4, true));
  db->writeResult("plant", result(12, {}));
  db->writeResult("yard", result(13, {param("SKZ", 7.5f, 5)}));
  db->writeResult("bare", result(14, {param("SKZ", 7.5f, 5), param("KZ", 6.5f, 9)}));
  EXPECT_THROW(db->writeResult("bare", result(15, {param("SKZ", 1, 5), param("TEMP", 1, 6)})),
               pqxx::sql_error);
  db->writeResult("x", result(16, {param("X", 1.5f, 7), param("X", 2.5f, 7)}));
  EXPECT_EQ(rows("SELECT * FROM result ORDER BY id; SELECT organization_alias FROM notification "
                 "ORDER BY id") +
                opLog(),
            "1|11|2023-07-04 09:05:01.25|42|SKZ|NULL|1|4|5|f\n"
            "2|11|2023-07-04 09:05:01.25|42|O'Brien's|2.5|1|536870912|8|f\n"
            "3|11|2023-07-04 09:05:01.25|42|TEMP|4.5|1|4|6|t\n"
            "4|14|2023-07-04 09:05:01.25|42|KZ|6.5|1|536870912|9|f\nO'Neil\nyard\nbare\nx\n"
            "write result_base: 2 param\nwrite result_base: 1 param\nwrite result_base: 1 param\n"
            "error duplicate data\nwrite table notification, O'Neil, error: 27\nwrite result: 2 "
            "param\nwrite result: 2 param\nresult not recorded\nerror duplicate data\nwrite table "
            "notification, yard, error: 27\nwrite result: 1 param\nerror duplicate data\nwrite "
            "table notification, bare, error: 27\nwrite result: 2 param\nerror duplicate data\n"
            "error duplicate data\nerror duplicate data\nwrite table notification, x, error: 27\n");
}

TEST_F(StoreWrites, MarksLatestValuesStagedValuesStatusesAndFlags) {
  // A first run without parameters leaves no mark; a repeat refreshes, also without them. The
  // mark is the UTC clock, as the server has it.
  db->writeResultMathHistory("plant", result(11, {}));
  db->writeResultMathHistory("plant", result(12, {param("SKZ", 1.5f, 5)}));
  db->writeResultMathHistory("plant", result(13, {param("SKZ", 1.5f, 5)}));
  db->writeResultMathHistory("plant", result(12, {}, "", 0, 4, true));
  // A value without a number keeps the shown one and moves only the time. Without a time the
  // statement ends on a comma, or names no column for a NaN: refused.
  exec("UPDATE visualization SET latest_raw_value = 1, latest_middle_value = 2, "
       "latest_trend_value = 3, latest_monotone_value = 4");
  db->writeLatestData(
      result(11, {{"SKZ", 1.25f, 2.25f, NAN, -0.5f, 5, ""}, {"TEMP", NAN, 1, 1, 1, 6, ""}}));
  EXPECT_THROW(db->writeLatestData(result(11, {param("KZ", 7.5f, 103)}, "")), pqxx::sql_error);
  EXPECT_THROW(db->writeLatestData(result(11, {param("KZ", NAN, 103)}, "")), pqxx::sql_error);
  EXPECT_EQ(db->writeResultTmp({{5, "2023-7-4 9:5:1.25", 1.5},
                                {6, "2023-7-4 9:5:2", NAN},
                                {8, "2023-7-4 9:5:3", -INFINITY}}) +
                db->writeResultTmp({}),
            "5, 6, 8");
  // One status row per measurement and place, refreshed on a repeat; an id of 0 is NULL in
  // the look-up and in the row. The hardware status only gains bits; a bit number wraps at 32,
  // and the top bit fits. The forecast curve (86401 s in 8 bytes, 1.0f in 4) is stored as bytes.
  for (const auto& [source, status, param_info_id, channel_id, point] :
       {std::tuple{42L, 2.0f, 11, 10, 0},
        {42L, 3.0f, 11, 10, 0},
        {42L, 4.0f, 11, 10, 20},
        {42L, 5.0f, 11, 0, 0},
        {4294967338L, 6.0f, 11, 0, 0},
        {42L, 7.0f, 12, 0, 0}})
    db->writeStatusStatusElement(source, status, param_info_id, channel_id, point);
  for (const auto& [status, machine, date] : {std::tuple{1.5f, 30, "2023-7-4 9:5:1.25"},
                                              {2.5f, 30, "2023-7-4 9:5:1.25"},
                                              {3.5f, 31, "2023-7-4 9:5:1.25"},
                                              {NAN, 30, "2023-7-4 9:5:3"}})
    db->writeStatusStatusAggregate(status, machine, date);
  db->writeAggregateMode(31, 2);
  db->setConnectionStatus("MODULE", 8, 1);
  db->setConnectionStatus("GATEWAY", 6, 3);
  db->setConnectionStatusOrganization("O'Neil", 4);
  for (const unsigned int bit : {2u, 0u, 34u, 31u})
    db->setHardwareStatusModule(42, bit);
  db->writeRulVisualization(5, "'\\\\x81510100000000000000803f'");
  EXPECT_EQ(rows("SELECT param_info_id, status_calc, status_vector, has_raw_data, abs(extract("
                 "epoch FROM (now() AT TIME ZONE 'UTC') - calculated_at)) < 60 FROM math_history "
                 "ORDER BY 1; SELECT id, latest_raw_value, latest_middle_value, latest_trend_value,"
                 " latest_monotone_value, value_at, length(rul_data), rul_data FROM visualization "
                 "WHERE id < 102 ORDER BY id; SELECT * FROM result_temp ORDER BY receipt_date; "
                 "SELECT * FROM status_element ORDER BY id; SELECT * FROM status_aggregate ORDER "
                 "BY id; SELECT id, mode FROM aggregate ORDER BY id; SELECT id, connection_status, "
                 "hardware_status FROM module WHERE id < 10 UNION ALL SELECT id, "
                 "connection_status, NULL FROM gateway ORDER BY 1; SELECT * FROM "
                 "organization_object ORDER BY alias_name COLLATE \"C\""),
            "12|0|4|t|t\n13|1|536870912|f|t\n5|1.25|2.25|3|-0.5|2023-07-04 09:05:01.25|12|\\x8151"
            "0100000000000000803f\n6|1|2|3|4|2023-07-04 09:05:01.25|NULL|NULL\n101|1|2|3|4|2023-"
            "07-04 09:05:01.5|2|\\x0102\n5|2023-07-04 09:05:01.25|1.5\n6|2023-07-04 09:05:02|NULL"
            "\n8|2023-07-04 09:05:03|NULL\n1|42|3|11|10|NULL\n2|42|4|11|10|20\n3|42|5|11|NULL|NULL"
            "\n4|4294967338|6|11|NULL|NULL\n5|42|7|12|NULL|NULL\n1|30|2.5|2023-07-04 09:05:01.25\n"
            "2|31|3.5|2023-07-04 09:05:01.25\n3|30|NULL|2023-07-04 09:05:03\n30|NULL\n31|2\n3|2|"
            "NULL\n6|3|NULL\n7|4|2147483653\n8|1|0\n9|0|0\nO'Neil|NULL|4\nbare|NULL|2\nplant|UTC+"
            "3:00|1\nyard|GMT-2:30|NULL\n");
}

TEST_F(StoreWrites, NotificationsOfAPlaceAreWrittenOnceADayUnlessTheirCodeRepeats) {
  // Code, date, type, status, channel, alias, visualization. Within the day before its own
  // time, counted from its first instant, also for a replayed older row, a code is written once
  // for a place; a closed row blocks as well. Another channel, alias, visualization or type is
  // another place. A lost connection (1, 1025, 1061) is raised again once the open one is
  // closed; rows still open are counted in ACTIVE_DAYS. Restored connections (8), data errors
  // (26) and messages of type 1 are written every time. "close" closes all rows written so far.
  const std::tuple<const char*, const char*, int, int, int, const char*, int> raised[] = {
      {"2", "4 12:0:0", 4, 0, 10, "plant", 0},    {"2", "4 13:0:0", 4, 0, 10, "plant", 0},
      {"2", "5 12:0:0", 4, 0, 10, "plant", 0},    {"2", "2 12:0:0", 4, 0, 10, "plant", 0},
      {"2", "5 12:0:1", 4, 0, 10, "plant", 0},    {"close", "", 0, 0, 0, "", 0},
      {"2", "5 18:0:0", 4, 0, 10, "plant", 0},    {"2", "5 18:0:0", 4, 0, 11, "plant", 0},
      {"2", "5 18:0:0", 4, 0, 10, "yard", 0},     {"2", "5 18:0:0", 4, 0, 10, "plant", 5},
      {"2", "5 18:0:0", 5, 0, 10, "plant", 0},    {"1", "4 12:0:0", 4, 0, 10, "plant", 0},
      {"1", "4 13:0:0", 4, 0, 10, "plant", 0},    {"1025", "4 12:0:0", 4, 0, 10, "plant", 0},
      {"1025", "4 13:0:0", 4, 0, 10, "plant", 0}, {"1061", "4 12:0:0", 4, 0, 10, "plant", 0},
      {"1061", "4 13:0:0", 4, 0, 10, "plant", 0}, {"close", "", 0, 0, 0, "", 0},
      {"1", "4 14:0:0", 4, 0, 10, "plant", 0},    {"1025", "4 14:0:0", 4, 0, 10, "plant", 0},
      {"1061", "4 14:0:0", 4, 0, 10, "plant", 0}, {"1", "4 15:0:0", 4, 0, 10, "plant", 0},
      {"1", "6 15:0:0", 4, 0, 10, "plant", 0},    {"1", "8 15:0:0", 4, 0, 10, "plant", 0},
      {"8", "9 12:0:0", 4, 1, 10, "plant", 0},    {"26", "9 12:0:0", 2, 1, 10, "plant", 0},
      {"2", "9 12:0:0", 1, 0, 10, "plant", 0},    {"8", "9 12:0:0", 4, 1, 10, "plant", 0},
      {"26", "9 12:0:0", 2, 1, 10, "plant", 0},   {"2", "9 12:0:0", 1, 0, 10, "plant", 0}};
  for (const auto& [code, day, type, status, channel, alias, view] : raised)
    if (std::string(code) == "close")
      exec("UPDATE notification SET status = 1");
    else
      db->notificationSave(code, 42, std::string("2023-7-") + day, status, 0, "", type, alias, 0,
                           channel, 20, false, view);
  // Keys of 0 and empty texts are NULL in the look-up and in the row; every key in the row.
  for (const char* date : {"2023-7-10 12:0:0.5", "2023-7-10 12:30:0"}) {
    db->notificationSave("24", 0, date, 0, 0, "", 5, "", 0, 0, 0, true, 0);
    db->notificationSave("12", 4294967338L, date, 3, 3, "it's", 4, "O'Neil", 80, 10, 20, false, 5);
  }
  const std::string log = opLog();
  EXPECT_EQ(scalar("SELECT string_agg(concat_ws(' ', message_code, type_message_id, status, "
                   "channel_id, organization_alias, visualization_id, to_char(date_of_creation, "
                   "'DD HH24:MI:SS'), active_days), ', ' ORDER BY id) FROM notification WHERE id "
                   "<= 20") +
                rows("SELECT * FROM notification WHERE id > 20") +
                log.substr(log.find("write table notification, , error: 24")),
            "2 4 1 10 plant 04 12:00:00, 2 4 1 10 plant 05 12:00:01 1, 2 4 1 11 plant 05 18:00:00, "
            "2 4 1 10 yard 05 18:00:00, 2 4 1 10 plant 5 05 18:00:00, 2 5 1 10 plant 05 18:00:00, "
            "1 4 1 10 plant 04 12:00:00, 1025 4 1 10 plant 04 12:00:00, 1061 4 1 10 plant 04 12:00:"
            "00, 1 4 0 10 plant 04 14:00:00, 1025 4 0 10 plant 04 14:00:00, 1061 4 0 10 plant 04 "
            "14:00:00, 1 4 0 10 plant 06 15:00:00 1, 1 4 0 10 plant 08 15:00:00 2, 8 4 1 10 plant "
            "09 12:00:00, 26 2 1 10 plant 09 12:00:00, 2 1 0 10 plant 09 12:00:00, 8 4 1 10 plant "
            "09 12:00:00, 26 2 1 10 plant 09 12:00:00, 2 1 0 10 plant 09 12:00:00 1"
            "21|NULL|NULL|2023-07-10 12:00:00.5|NULL|5|0|NULL|NULL|NULL|NULL|NULL|NULL|24|t\n"
            "22|4294967338|3|2023-07-10 12:00:00.5|it's|4|3|NULL|O'Neil|80|10|20|5|12|f\n"
            "write table notification, , error: 24\nwrite table notification, O'Neil, error: 12\n");
}

TEST_F(StoreWrites, SystemNotificationsClosingAndDefects) {
  // Codes switched off or unknown are dropped; the recommendation is the one of the code and
  // type, and one without a type serves every type.
  db->notificationSystemSave("12", 42, "2023-7-4 12:0:0", 1, 0, "", 4, "plant", 10, 20);
  db->notificationSystemSave("9", 42, "2023-7-4 12:0:0", 1, 0, "", 4, "plant", 10, 20);
  db->notificationSystemSave("13", 42, "2023-7-4 12:0:0", 1, 3, "late", 4, "plant", 10, 20);
  db->notificationSystemSave("27", 0, "2023-7-4 12:0:0", 1, 0, "", 5, "plant", 0, 0);
  db->notificationSystemSave("x'1", 42, "2023-7-4 12:0:0", 0, 0, "it's", 4, "O'Neil", 11, 20);
  db->notificationSystemSave("x'1", 42, "2023-7-4 13:0:0", 0, 0, "it's", 4, "O'Neil", 11, 20);
  std::string got = rows("SELECT * FROM notification ORDER BY id");
  for (const auto& [code, type] :
       {std::pair{"13", 2}, {"13", 5}, {"14", 0}, {"14", 4}, {"15", 0}, {"x'1", 0}})
    got += cat(db->getRecommendationCode(code, type)) + ",";
  for (const auto& [id, type] : {std::pair{80, 4}, {80, 2}, {80, 0}, {83, 2}, {82, 4}, {99, 0}})
    got += cat(db->isRecommendationActive(id, type));
  // Closing takes the open rows of the place, of any visualization, with the alias as a text:
  // the empty alias is one; a gateway and no point are two more keys. Rows 12.. differ from
  // row 11 in visualization 5, alias NULL or '', source 43, gateway 3, type 2, no point, code 2
  // or status 5.
  exec("INSERT INTO notification (id, source, gateway_id, type_message_id, status, "
       "organization_alias, channel_id, control_point_id, visualization_id, message_code) SELECT "
       "id, s, g, t, st, a, 10, p, v, c FROM (VALUES (11, 42, NULL, 4, 0, 'plant', 20, NULL, '1'),"
       " (12, 42, NULL, 4, 0, 'plant', 20, 5, '1'), (13, 42, NULL, 4, 0, NULL, 20, NULL, '1'), "
       "(14, 42, NULL, 4, 0, '', 20, NULL, '1'), (15, 43, NULL, 4, 0, 'plant', 20, NULL, '1'), "
       "(16, 42, 3, 4, 0, 'plant', 20, NULL, '1'), (17, 42, NULL, 2, 0, 'plant', 20, NULL, '1'), "
       "(18, 42, NULL, 4, 0, 'plant', NULL, NULL, '1'), (19, 42, NULL, 4, 0, 'plant', 20, NULL, "
       "'2'), (20, 42, NULL, 4, 5, 'plant', 20, NULL, '1')) v(id, s, g, t, st, a, p, v, c)");
  const std::string closed =
      "SELECT string_agg(id::text, ',' ORDER BY id) FROM notification WHERE status = 9";
  db->setNotificationStatus("1", 42, "2023-7-4 12:0:0", 9, 0, 4, "plant", 10, 20);
  db->setNotificationStatus("1", 42, "", 9, 0, 4, "", 10, 20);
  db->setNotificationStatus("1", 42, "", 9, 3, 4, "plant", 10, 0);
  got += "," + scalar(closed) + "/";
  db->setNotificationStatus("1", 42, "", 9, 0, 4, "plant", 10, 0);
  db->setNotificationStatus("1", 42, "", 9, 3, 4, "plant", 10, 20);
  db->setNotificationStatus("x'1", 42, "", 9, 0, 4, "O'Neil", 11, 20);
  got += scalar(closed) + "/";
  // One defect record per measurement, the smallest number standing for all; a recomputed
  // measurement replaces its record or, without defects, loses it.
  for (const auto& [id, defects] : {std::pair{11, std::map<int, int>{{7, 1}, {3, 2}, {5, 4}}},
                                    {12, {{9, 6}}},
                                    {12, {{1, 5}}},
                                    {13, {{2, 2}}},
                                    {13, {}}})
    db->writeDefects(id, defects);
  const std::string closing = "set status notification, 42, message_code: 1\n";
  EXPECT_EQ(got + rows("SELECT * FROM defects ORDER BY id") + opLog(),
            "1|42|3|2023-07-04 12:00:00|late|4|1|NULL|plant|80|10|20|NULL|13|f\n"
            "2|NULL|NULL|2023-07-04 12:00:00|NULL|5|1|NULL|plant|NULL|NULL|NULL|NULL|27|f\n"
            "3|42|NULL|2023-07-04 12:00:00|it's|4|0|NULL|O'Neil|84|11|20|NULL|x'1|f\n"
            "81,0,83,0,0,84,101100,11,12,14/3,11,12,14,16,18/11|3|2\n12|1|5\nwrite table "
            "notification, plant, error: 13\nwrite table notification, plant, error: 27\nwrite "
            "table notification, O'Neil, error: x'1\n" +
                closing + closing + closing + closing + closing +
                "set status notification, 42, message_code: x'1\nwrite defect\nwrite defect\n"
                "write defect\nwrite defect\n");
}

class StoreSession : public Store {};

TEST_F(StoreSession, IsWaitedForAtStartReportedWhenLostAndReplacedByOpenConnect) {
  // The other sessions on the suite's database once their count has settled at expected, or
  // after five seconds: a backend leaves a moment after its client.
  const auto others = [&](const std::string& expected) {
    std::string count;
    for (int wait = 0; wait < 100 && count != expected; ++wait, usleep(50000))
      count = scalar("SELECT COUNT(*) FROM pg_stat_activity WHERE datname = '" + database().name() +
                     "' AND pid <> pg_backend_pid()");
    return count;
  };
  ASSERT_EQ(others("1"), "1");
  db->openConnect();
  EXPECT_EQ(others("1"), "1") << "a replaced session must not stay open on the server";
  const int pid = db->getValueInt("SELECT pg_backend_pid()");
  endSession();
  // No reconnect behind the caller's back: the loop's catch block decides when.
  EXPECT_THROW(db->writeData("INSERT INTO param_info (id) VALUES (1)"), pqxx::broken_connection);
  db->openConnect();
  EXPECT_NE(db->getValueInt("SELECT pg_backend_pid()"), pid);
  db->closeConnect();
  db->closeConnect();
  EXPECT_EQ(others("0"), "0");
  EXPECT_THROW(db->getValueInt("SELECT 1"), pqxx::broken_connection);
  db->openConnect();
  EXPECT_EQ(db->getValueInt("SELECT COUNT(*) FROM param_info"), 0);
  const std::string line = "connect to database: " + database().host() + " " + database().name() +
                           " " + database().user() + "\n";
  EXPECT_EQ(opLog(), line + line + line);

  // A role created a while after the first attempt, as when the server comes up: every refused
  // attempt logs libpq's reason and the pause; then the one connection.
  const std::string role = database().name() + "_late", path = temporaryFile("late");
  const std::string reason = "role \"" + role + "\" does not exist",
                    pause = "reconnect pause 30c\n";
  PrintLog log(false, true, path);
  std::thread server([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(800));
    exec("CREATE ROLE " + role + " LOGIN");
  });
  auto late = std::make_unique<WorkPostgreSQL>(database().host(), database().name(), role, "", &log,
                                               std::chrono::milliseconds(100));
  server.join();
  EXPECT_EQ(late->getValueInt("SELECT 7"), 7);
  late.reset();
  exec("DROP ROLE " + role);
  const std::string text = fileText(path);
  EXPECT_LT(text.find(reason), text.find(pause)) << text;
  EXPECT_LT(text.find(pause), text.rfind(reason)) << text;
  EXPECT_LT(text.rfind(reason), text.rfind(pause)) << text;
  EXPECT_EQ(text.substr(text.find("connect to database: ")),
            "connect to database: " + database().host() + " " + database().name() + " " + role +
                "\n");
}

// Numbers formatted with a decimal comma and a point between thousands, as on a host set up in
// German or Russian.
struct DecimalComma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST_F(StoreSession, NumbersCarryAPointInADecimalCommaLocaleAndResultsKeepTheirPartitions) {
  // The C library's formatting as well, where the host has the locale.
  const std::string saved_c = std::setlocale(LC_NUMERIC, nullptr);
  const std::locale saved;
  std::setlocale(LC_NUMERIC, "de_DE.utf8");
  std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
  db->writeStatusControlPoint(2.75f, 1234.5f, 21, "2023-7-4 9:5:1");
  db->writeResultTmp({{5, "2023-7-4 9:5:1", -2.5e-7}});
  std::vector<std::vector<double>> table;
  db->readDataTable("SELECT 1234.5::float8, -0.375::float8", table);
  std::locale::global(saved);
  std::setlocale(LC_NUMERIC, saved_c.c_str());
  EXPECT_EQ(list(table) + rows("SELECT status, status_max FROM control_point WHERE id = 21 UNION "
                               "ALL SELECT value, NULL FROM result_temp"),
            "[1234.5,-0.375]2.75|1234.5\n-2.5e-07|NULL\n");
  // A partition of the results for each new or renumbered visualization; it outlives the
  // visualization and is found again when the id comes back.
  exec("UPDATE visualization SET id = 7 WHERE id = 5; DELETE FROM visualization WHERE id = 6;"
       "INSERT INTO visualization (id, source, name_param) VALUES (6, 42, 'B')");
  EXPECT_EQ(rows("SELECT inhrelid::regclass FROM pg_inherits WHERE inhparent = "
                 "'result_base'::regclass ORDER BY inhrelid"),
            "result_101\nresult_5\nresult_6\nresult_103\nresult_7\n");
}
