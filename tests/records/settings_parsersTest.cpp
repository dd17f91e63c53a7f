#include "records/settings_parsers.h"

#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <stdexcept>

template <typename T> std::ostream& operator<<(std::ostream& out, const std::vector<T>& items) {
  for (const auto& item : items)
    out << item << ",";
  return out;
}

// What a reader printed on standard output, then each entry it gave as "key=values;".
template <typename F> std::string read(F reader) {
  testing::internal::CaptureStdout();
  const auto entries = reader();
  std::ostringstream out;
  out.precision(17);
  out << testing::internal::GetCapturedStdout();
  for (const auto& [key, values] : entries)
    out << key << "=" << values << ";";
  return out.str();
}

// PARAM_SETTINGS read by position: one blank after each colon (else the first character is lost),
// the last key running to the end of its object, values correctly rounded by the C library, a
// Cyrillic name as its bytes. "text|name=value/sub_1_packet;..." or the kind of exception.
TEST(Records, SettingsReadAsFarAsTheyGoAndRecordsStartAtTheirDefaults) {
  std::istringstream table(R"([|
[{"name_param": "ku_vx", "value": 1.5},{"name_param": "с", "value": null}]|ku_vx=1.5/;с=0/;
[{"name_param": "f", "sub_1_packet": "A", "value": -2.5e-3}]|f=-0.0025000000000000001/A;
[{"name_param": "g", "value": 3, "sub_1_packet": "B"}, {"value": 3.25, "name_param": "rpm"}]|g=3/B;rpm=3.25/;
[{"name_param": "a", "value": 0.3},{"name_param": "b", "value": 1e-6}]|a=0.29999999999999999/;b=9.9999999999999995e-07/;
[{"name_param": "a", "value":    2.5},{"name_param": "b", "value": 7 },{"value": 1.5abc}]|a=2.5/;b=7/;=1.5/;
[{"name_param": "a", "value":15},{"name_param":"abc", "value":1.5}]|a=5/;bc=0.5/;
[{"name_param": "ab,c", "value": 1}, {"value": , "name_param": "a"},{"value": null, "name_param": "a"}]|a=1/;a=0/;a=0/;
[{"name_param": "a"}]|invalid
[{"value": abc}]|invalid
[{"value": 1e999}]|range
[{"value": 1e-310}]|range
[{"value": 1} ]|range
{"value": 1}|range
[{"name_param":}]|range)");
  for (std::string c; std::getline(table, c);) {
    std::ostringstream out;
    out.precision(17);
    try {
      for (const param_setting& s : parse_param_settings(c.substr(0, c.find('|'))))
        out << s.name << "=" << s.value << "/" << s.sub_1_packet << ";";
    } catch (const std::logic_error& e) {
      out << (dynamic_cast<const std::out_of_range*>(&e) != nullptr ? "range" : "invalid");
    }
    EXPECT_EQ(out.str(), c.substr(c.find('|') + 1)) << c;
  }
  // Raw settings digit by digit (3 * 0.1 lands one bit above 0.3), JSON of another shape empty
  // without a word; a number beyond int or long skipped, a single setting keeping its value
  // (9223372036854775808 lands above 2^63); no JSON object, service settings unchanged.
  std::string got;
  for (const char* text :
       {R"([{"name_param": "k", "value": 0.3, "unit": "g"}, {"value": 2}, {"name_param": "r",)"
        R"( "value": 25.6e3}, {"name_param": "s", "value": "2"}, {"name_param": "", "value": 1},)"
        R"( {"name_param": 7, "value": 1}, 5, "x", [1], {"name_param": "d", "value": 1},)"
        R"( {"name_param": "d", "value": -2}, {"name_param": "d", "value": null}])",
        "[{\"name_param\": \"a\", \"value\": 1},]", "{\"n\": 1}"})
    got += read([&] { return json_parse_settings_raw(text); }) + "|";
  const std::string text =
      R"({"rulActive": [{"codeMessage": "3001", "recommendations": [9]}], "corridorActive": [)"
      R"( {"codeMessage": "1001", "recommendations": [1, 2.9, -3.7, "4", null, 5e9, 1e999, 6]},)"
      R"( {"codeMessage": "1002"}, {"codeMessage": "1003", "recommendations": 7},)"
      R"( {"codeMessage": 1004, "recommendations": [1]}, {"recommendations": [1]}, 12, "1005",)"
      R"( {"codeMessage": "1006", "recommendations": [1]},)"
      R"( {"codeMessage": "1006", "recommendations": [2, 3]}]})";
  for (const char* situation : {"corridorActive", "rulActive", "CorridorActive"})
    got += read([&] { return json_parse_message_settings(text, situation); }) + "|";
  for (const char* other :
       {R"({"rulActive": {"codeMessage": "1"}})", "[1, 2]", "", "{\"r\xc3\xbcl\": []}"})
    got += read([&] { return json_parse_message_settings(other, "rulActive"); }) + "|";
  std::map<std::string, std::vector<long>> numbers = {
      {"kept", {5}}, {"source", {5}}, {"calc", {1}}};
  std::map<std::string, std::string> texts = {{"topic", "old"}};
  std::map<std::string, bool> flags = {{"log", false}};
  testing::internal::CaptureStdout();
  for (const char* settings :
       {R"({"source": [101, 102.9, -7.9, "x", null, 1e999, -1e19], "rest": 1, "mid": -10.99,)"
        R"( "topic": "vek", "log": TRUE, "on": false, "obj": {"a": 1}, "calc": 1e19, "empty": [],)"
        R"( "no": null, "top": 9223372036854775807, "low": -9223372036854775808, "big": -1e18})",
        "", "[1]", "{\"topic\": \"\xd0\xb2\"}"})
    json_parse_vek_settings(settings, numbers, texts, flags);
  got += testing::internal::GetCapturedStdout();
  EXPECT_EQ(got + read([&] { return numbers; }) + read([&] { return texts; }) +
                read([&] { return flags; }),
            "d=-2;k=0.30000000000000004;r=25600;|failed to parse settings raw\n||"
            "1001=1,2,-3,6,;1002=;1003=;1006=2,3,;|3001=9,;||||failed to parse message settings\n|"
            "failed to parse message settings\n|failed to parse vek settings\nfailed to parse vek "
            "settings\nfailed to parse vek settings\nbig=-1000000000000000000,;calc=1,;empty=;"
            "kept=5,;mid=-10,;rest=1,;source=101,102,-7,;topic=vek;log=1;on=0;");
  // Readers leave a field alone where its column is NULL, so the defaults are what they keep; a
  // module record made elsewhere holds no indeterminate key.
  const result_param p;
  const std::unique_ptr<module_data> m(new module_data); // default-initialized, not zeroed
  std::ostringstream out;
  out << p.value << p.middle << p.trend << p.monotone << p.visualization_id << channel().active
      << calc_result().has_raw_data << visualization().type_corridor << m->id << m->source
      << m->type_module << m->gateway_id << m->broadcasting_period << m->data_in_utc_0;
  EXPECT_EQ(out.str(), "nannannannan0111000000");
}
