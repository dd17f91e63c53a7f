// The measurement object where a run of the service (scenarios/rows.scn) cannot look.
#include <cmath>
#include <limits>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "assessment/DataCache.h"
#include "equipment/Aggregate.h"
#include "equipment/Module.h"
#include "equipment/Visualization.h"
#include "pipeline/DataParsing.h"
#include "pipeline/sql_text.h"
#include "support/StoreTest.h"

namespace {
// A piece decoded: "part" if not whole, "name:", the values, "date=value" per record; or "throw".
std::string decoded(int layout, int c_type, std::string sub_channel, std::string data) {
  raw r{layout, c_type, std::move(sub_channel), std::move(data), {}, {}, {}, {}};
  std::ostringstream text;
  text.precision(10);
  try {
    text << (DataParsing::decodeRaw(r) ? "" : " part")
         << (layout == 15 && !r.data.empty() ? " " + r.data + ":" : "");
  } catch (const std::invalid_argument&) {
    return "throw";
  }
  for (double v : r.values)
    text << " " << v;
  for (const auto& [date, v] : r.timed_values)
    text << " " << date << "=" << v;
  return text.str().substr(text.str().empty() ? 0 : 1);
}
// layout|c_type|sub-channel|data|what it decodes to. Samples lie least significant byte first;
// a timed record leads with a 64-bit stamp, which counts seconds up to 3000000000 and
// milliseconds above (2^63: top bit set, 808 ms); of two records of one stamp the later counts.
const char* const kDecodeCases = R"(4|1||0x000001000001ffff|0 1 256 65535
4|2||0x0000ffffff7f0080|0 -1 32767 -32768
4|3||0x000000000001ffffff|0 65536 16777215
4|4||0x000000000080FFFFFF|0 8388608 16777215
4|5||0x0000000001000000ffffffff|0 1 4294967295
4|6||0x00000080ffffffffffffff7f|-2147483648 -1 2147483647
4|8||0x0011ff|0 17 255
4|9||0xzz01|nan nan
9|1||0x00000000000000800100|292278994-8-17 7:12:55.808=1
9|7||0xe8030000000000000000c03fe903000000000000000080be|1970-1-1 0:16:40=1.5 1970-1-1 0:16:41=-0.25
9|5||0x640000000000000001000000c80000000000000002|1970-1-1 0:1:40=1
15|7||0x41000044c1|A: -12.25
15|5||0x123456|
4|1|x|0x0500123|part 5
4|1||0x0500123|5
4|5|x|0x|
4|1|x||part
4|1|||
4|1||0x 001|throw
4|1||0x0x01|throw
9|1||0x00000000000000g00100|throw
15|5||0x4q01000000|throw
9|2||0x005ed0b2000000000a00015ed0b2000000000b000068e5cf8b0100000c000568e5cf8b0100000d00005ed0b2000000000e00|1970-2-4 17:20:0.1=11 2023-11-14 22:13:20.0=12 2023-11-14 22:13:20.5=13 2065-1-24 5:20:0=14)";
TEST(DataParsingDecode, RawPiecesReadByLayoutAndFormat) {
  std::istringstream cases(kDecodeCases);
  for (std::string line; std::getline(cases, line);) {
    std::vector<std::string> f(5);
    std::istringstream fields(line);
    for (std::string& field : f)
      std::getline(fields, field, '|');
    EXPECT_EQ(decoded(std::stoi(f[0]), std::stoi(f[1]), f[2], f[3]), f[4]) << line;
  }
  for (int layout : {-3, 0, 6, 13, 14, 16, 19, 40})
    EXPECT_EQ(decoded(layout, 1, "", "0x0100"), layout < 15 ? "1" : "") << layout;
  for (int layout : {7, 8, 10, 11, 12, 17, 18})
    EXPECT_EQ(decoded(layout, 8, "", "0x0568e5cf8b0100000d"), "2023-11-14 22:13:20.5=13") << layout;
  EXPECT_THROW(DataParsing::string_to_double("", 1), std::invalid_argument);
  EXPECT_THROW(DataParsing::string_to_double("0g", 1), std::invalid_argument);
  EXPECT_TRUE(std::isnan(DataParsing::string_to_double("", 9)));
  raw r;
  r.settings = R"([{"name_param": "gain", "value": 2.5}, {"name_param": "rate", "value": 256}])";
  DataParsing::decodeRaw(r);
  EXPECT_EQ(r.settings_values, (std::map<std::string, double>{{"gain", 2.5}, {"rate", 256}}));
  // Floats in statements as libpqxx 6.4 prints them, not finite ones whatever their sign bit.
  const float inf = std::numeric_limits<float>::infinity(),
              nan = std::numeric_limits<float>::quiet_NaN();
  std::string floats;
  for (float f :
       {2.0f, -3.0f, 0.0f, 0.1f, 16777217.0f, 1234567.0f, 2562047788015.0f, inf, -inf, nan, -nan})
    floats += sql_text::floatText(f) + " ";
  EXPECT_EQ(floats,
            "2 -3 0 0.100000001 16777216 1234567 2.56204787e+12 infinity -infinity nan nan ");
}

// Pump 1 of "plant". Module 42 (type 6, revision 2): channel 100 for the whole module at point 11,
// channel 101 (sub-channel b) at points 12 and 13, displays A, B, C at 11 and A at 12. Module 43
// has no bound channel, module 44 only a switched-off binding.
const char* const kPlant = R"(INSERT INTO organization_object VALUES ('plant', 'UTC+3:00', NULL);
INSERT INTO observed_node VALUES (1, 'plant'); INSERT INTO aggregate (id, node_id, type_equipment_id, name) VALUES (3, 1, 8, 'pump 1');
INSERT INTO module (id, source, type_module, revision) VALUES (7, 42, 6, 2), (8, 43, 103, 1), (9, 44, 10, 1);
INSERT INTO module_param (name, value, type_module, type_param, module_revision) VALUES ('rate', 25600, 103, 1, 2), ('gain', 1, 103, 1, 3);
INSERT INTO channel VALUES (100, 42, '', 'ZXYcab'), (101, 42, 'b', 'zyx'), (202, 43, '', 'yzx'), (300, 44, '', '');
INSERT INTO channel_contol_point VALUES (100, 11, true), (101, 12, true), (101, 13, true), (300, 14, false);
INSERT INTO control_point (id, aggregate_id, significance_coefficient) SELECT id, 3, 1 FROM generate_series(11, 14) id;
INSERT INTO observed_param VALUES ('A', 1), ('B', 1), ('C', 1); INSERT INTO recommendation VALUES (51, '2003', 2, true);
INSERT INTO visualization (id, source, name_param, type_param, channel_id, control_point_id, active, kz, green, yellow, orange,
  corridor_active, message_settings) SELECT i, 42, n, 1, c, p, true, 1, 1, 2, 3, true, '{"corridorActive": [{"codeMessage": "2003",
  "recommendations": []}]}' FROM (VALUES (501, 'A', 100, 11), (502, 'B', 100, 11), (503, 'C', 100, 11), (599, 'A', 101, 12)) v(i, n, c, p);
INSERT INTO list_of_messages VALUES ('4', true), ('2003', true), ('2005', false), ('2007', true);
INSERT INTO param_info (id, source, type_mod, type_param, receipt_date, tu_error) SELECT i, s, m, p, '2024-05-01 10:00', t FROM (VALUES
  (1, 42, 103, 1, NULL), (2, 42, 103, 1, NULL), (3, 43, 103, 1, NULL), (4, 44, 10, 0, '[{"name_param": "state", "value": 1}]')) v(i, s, m, p, t);
INSERT INTO fu_raw (param_info_id, param_type_id, c_type, data) VALUES (1, 4, 2, '0x1700'), (3, 4, 2, '0x1700');)";
class DataParsingTest : public vek_test::StoreTest {};
TEST_F(DataParsingTest, FoldedValuesDefectsModuleStateAndAReplay) {
  exec(kPlant);
  param_info info;
  std::unique_ptr<Module> module;
  std::unique_ptr<Aggregate> aggregate;
  std::unique_ptr<Visualization> shown;
  std::unique_ptr<DataParsing> parsing;
  DataCache cache;
  // The objects of row id as the loop makes them, after readData and run for each point.
  const auto run = [&](int id, bool replay = false) -> DataParsing& {
    parsing.reset();
    store().readParamInfo(id, info);
    module = std::make_unique<Module>(&store(), info.source);
    aggregate =
        std::make_unique<Aggregate>(&store(), info.source, &log(), info.receipt_date, nullptr);
    shown = std::make_unique<Visualization>(&store(), info.source);
    parsing = std::make_unique<DataParsing>(&store(), module.get(), info, &log(), replay,
                                            aggregate.get(), shown->getData({1, 2, 3}), &cache);
    parsing->readData();
    for (const control_point& point : aggregate->control_points) {
      parsing->setControlPoint(point);
      parsing->run(true);
    }
    if (aggregate->control_points.empty())
      parsing->run(false);
    return *parsing;
  };
  // The letters in the places of the first and second xyz and abc triples.
  const auto axes = [](const DataParsing& m) {
    std::string text;
    for (const auto* t :
         {&m.axes_xyz_first, &m.axes_xyz_second, &m.axes_abc_first, &m.axes_abc_second})
      for (const auto& [place, letter] : *t)
        text += letter;
    return text;
  };
  DataParsing& m = run(1);
  // Upper case works as lower case; a shorter text changes only the places it reaches; the
  // seventh letter on and an empty text change nothing; without points the module's channel.
  EXPECT_EQ(axes(m), "zxyxyzabccab");
  for (const auto& [text, maps] :
       {std::pair{"y", "yxyxyzabccab"}, {"xyzzyxa", "xyzzyxabccab"}, {"", "xyzzyxabccab"}}) {
    m.channels.at(0).axis_order = text;
    m.run(true);
    EXPECT_EQ(axes(m), maps) << text;
  }
  EXPECT_EQ(axes(run(3)), "yzxxyzabcabc");
  // Defaults of the row's module type at the module's own revision only. No piece: no data,
  // and a computation of a module type that has one sets `computed` anew even then.
  DataParsing& empty = run(2);
  std::string defaults;
  for (const auto& p : empty.module_params)
    defaults += p.name + std::to_string(p.value) + " ";
  EXPECT_EQ(defaults, "rate25600.000000 ");
  EXPECT_TRUE(empty.results.empty() && !empty.computed);
  EXPECT_NE(logText().find("no data in fu_raw\n"), std::string::npos);
  EXPECT_FALSE(empty.computeModule11() || empty.computeModule2());
  std::vector<std::string> fields;
  empty.parsing_tu("1;2;3;4;5", fields); // a tail counts only in the fourth place
  EXPECT_EQ(fields.size(), 4u);
  empty.no_data = false;
  for (int type : {1, 9}) {
    empty.type_mod = type, empty.computed = true;
    empty.run(false);
    EXPECT_FALSE(empty.computed) << type;
  }
  // type_mod/type_param, "+" for a pair that is processed; a refused telemetry row is passed
  // over in silence, any other refused pair is logged.
  std::istringstream pairs("1/0+ 1/8+ 1/9- 9/8+ 2/8+ 8/0+ 3/21+ 3/22- 5/6+ 7/7- 10/10+ 10/11- "
                           "11/1+ 11/2- 101/4+ 102/3- 103/1+ 106/2- 999/0- 999/200+ 999/201+ "
                           "999/202- 12/77+ 12/-5+ 4/1- 1/-1-");
  char slash = 0, mark = 0;
  std::string marks, expected, refusals;
  const std::size_t before = logText().size();
  while (pairs >> empty.type_mod >> slash >> empty.type_param >> mark) {
    marks += empty.verify() ? '+' : '-';
    expected += mark;
    if (mark == '-' && empty.type_param != 0)
      refusals += "type_mod/type_param  will not be processed\n";
  }
  EXPECT_EQ(marks, expected);
  EXPECT_EQ(logText().substr(before), refusals);

  DataParsing& f = run(1);
  f.results.resize(1); // at channel 100 and point 11
  f.results[0].params = {{"A", 1.0f}, {"B", 2.0f}, {"C", 3.0f}, {"D", 4.0f}};
  // All displays of the module: A of point 12 and D, shown nowhere, are not this result's.
  // Another kind, and indexes outside the results, change nothing.
  std::map<std::string, double> middles = {{"A", 1.5}, {"B", 1000000.01}, {"Z", 9.0}},
                                trends = {{"A", -0.25}}, monotones = {{"C", 0.75}};
  f.updateLatest(0, shown->getData({1}));
  f.updateLatest("middle", 0, middles);
  f.updateLatest("trend", 0, trends);
  f.updateLatest("monotone", 0, monotones);
  f.updateLatest("median", 0, trends);
  f.updateRul(0, {{"C", "12 days"}});
  for (int outside : {1, -1}) {
    f.updateLatest("middle", outside, trends);
    f.updateLatest(outside, shown->getData({1}));
    f.updateRul(outside, {{"C", "1 day"}});
  }
  std::ostringstream text;
  for (const result_param& p : f.results[0].result_params)
    text << p.name << " " << p.visualization_id << " " << p.value << " " << p.middle << " "
         << p.trend << " " << p.monotone << " " << p.rul << "|";
  // 1000000.01 narrows to the float 1e6, but the range is judged before narrowing.
  EXPECT_EQ(text.str(),
            "A 501 1 1.5 -0.25 nan |B 502 2 nan nan nan |C 503 3 nan nan 0.75 12 days|");

  // A replay colours the point (A, B, C beyond orange 3) but stores no status, raises nothing.
  DataParsing& replay = run(1, true);
  replay.results[0].params = {{"A", 5.0f}, {"B", 5.0f}, {"C", 5.0f}};
  replay.updateLatest(0, shown->getData({1, 2, 3}, 100, 11));
  replay.write(replay.results[0]);
  replay.computeStatus(shown->getData({1, 2, 3}));
  EXPECT_EQ(cache.getCpStatus(11), 4.0f);
  EXPECT_EQ(scalar("SELECT COALESCE(status, -1) FROM control_point WHERE id = 11"), "-1");
  // A module without a bound channel files its state at no place.
  DataParsing& lone = run(4);
  ASSERT_TRUE(lone.channels.empty());
  EXPECT_TRUE(lone.control_tu(shown->getData({2})));
  // Defect 3 at level 1, defect 5 (its message switched off) and defect 7 at level 0; the level
  // plus one is the message type. The defect with the smallest number stands for the row.
  // Code, type, text, recommendation, channel and point of each notification; the defect row.
  DataParsing& d = run(1);
  d.setControlPoint(aggregate->control_points.front());
  d.defects = {{7, 0}, {3, 1}, {5, 2}};
  d.control_defects();
  d.updateLatest(0, shown->getData({1, 2, 3}, 100, 11));
  d.write(d.results[0]);
  EXPECT_EQ(scalar("SELECT string_agg(concat_ws('|', message_code, type_message_id, "
                   "additional_info, recommendation_id, channel_id, control_point_id), ' ' ORDER "
                   "BY id) || ' ' || (SELECT concat_ws('|', id, defect_code, defect_type) FROM "
                   "defects) FROM notification"),
            "4|2|44 2003|2|51|100|11 2007|1|100|11 1|3|1");
}

} // namespace
