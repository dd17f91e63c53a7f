// The readers of the settings texts, and the defaults of the shared records.
#include "records/settings_parsers.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using Codes = std::map<std::string, std::vector<int>>;
using Numbers = std::map<std::string, std::vector<long>>;

// "name=value/sub_1_packet;" per setting, values with all the digits of a double, or the kind
// of the exception.
std::string settings(const std::string& text) {
  try {
    std::ostringstream out;
    out.precision(17);
    for (const param_setting& s : parse_param_settings(text)) {
      out << s.name << "=" << s.value << "/" << s.sub_1_packet << ";";
    }
    return out.str();
  } catch (const std::invalid_argument&) {
    return "invalid";
  } catch (const std::out_of_range&) {
    return "range";
  }
}

// What a reader printed on standard output.
template <typename F> std::string printed(F reader) {
  testing::internal::CaptureStdout();
  reader();
  return testing::internal::GetCapturedStdout();
}

// The positional scanner of PARAM_SETTINGS: one blank after each colon, the last key running to
// the end of its object, values converted correctly rounded by the C library.
TEST(ParseParamSettings, ThrowsWhereTheLayoutIsBroken) {
  const std::pair<const char*, const char*> cases[] = {
      {R"([{"name_param": "ku_vx", "value": 1.5},{"name_param": "g_del", "value": null}])",
       "ku_vx=1.5/;g_del=0/;"},
      {R"([{"name_param": "f", "sub_1_packet": "A", "value": -2.5e-3}, {"name_param": "g", )"
       R"("value": 3, "sub_1_packet": "B"}, {"value": 3.25, "name_param": "rpm"}])",
       "f=-0.0025000000000000001/A;g=3/B;rpm=3.25/;"},
      {R"([{"name_param": "a", "value": 0.3},{"name_param": "b", "value": 1e-6}])",
       "a=0.29999999999999999/;b=9.9999999999999995e-07/;"},
      {R"([{"name_param": "a", "value":    2.5},{"name_param": "b", "value": 7 },)"
       R"({"name_param": "c", "value": 1.5abc}])",
       "a=2.5/;b=7/;c=1.5/;"},
      {"[{\"name_param\": \"\xd1\x81\", \"value\": 5}]", "\xd1\x81=5/;"},
      // Without the blank after the colon the first character is lost.
      {R"([{"name_param": "a", "value":15},{"name_param":"abc", "value":1.5}])", "a=5/;bc=0.5/;"},
      {R"([{"name_param": "ab,c", "value": 1}, {"value": , "name_param": "a"},{"value": 4}])",
       "a=1/;a=0/;=4/;"},
      {R"([{"value": null, "name_param": "a"}])", "a=0/;"}};
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(settings(text), expected) << text;
  }
  // Too short for anything; no "value" key or no number for it; a value beyond double, more
  // than one character after the last "}", a bare object, a colon at the end of an object.
  std::string results;
  for (const char* text : {"", "[", "x", "[]", "{}", R"([{"name_param": "a"}])",
                           R"([{"value": abc}])", R"([{"value": null }])", R"([{"value": 1e999}])",
                           R"([{"value": 1e-310}])", "[{\"value\": 1}]\n", R"([{"value": 1} ])",
                           "[ ]", R"({"value": 1})", R"([{"name_param":}])"}) {
    results += settings(text) + ",";
  }
  EXPECT_EQ(results, ",,,,,invalid,invalid,invalid,range,range,range,range,range,range,range,");
}

TEST(JsonParseSettingsRaw, UnreadableTextReportsAndGivesNothing) {
  std::map<std::string, double> values;
  EXPECT_EQ(printed([&] {
              values = json_parse_settings_raw(
                  R"([{"name_param": "k_gain", "value": 0.3, "unit": "g"}, {"value": 2},)"
                  R"( {"name_param": "rate", "value": 25.6e3}, {"name_param": "r2", "value": "2"},)"
                  R"( {"name_param": "", "value": 1}, {"name_param": 7, "value": 1}, 5, "x", [1],)"
                  R"( {"name_param": "dup", "value": 1}, {"name_param": "dup", "value": -2},)"
                  R"( {"name_param": "dup", "value": null}])");
            }),
            "");
  // Numbers by the digit-by-digit rule: 3 * 0.1 lands one bit above 0.3.
  EXPECT_EQ(values, (std::map<std::string, double>{
                        {"dup", -2.0}, {"k_gain", 0x1.3333333333334p-2}, {"rate", 25600.0}}));
  // Valid JSON of another shape is empty without a word.
  std::string reports;
  for (const char* text :
       {"", "[{\"name_param\": \"a\", \"value\": 1},]", "not json",
        "[{\"name_param\": \"\xd1\x81\", \"value\": 1}]", "{\"n\": 1}", "3", "[]"}) {
    reports += printed([&] { values = json_parse_settings_raw(text); });
    reports += std::to_string(values.size());
  }
  const std::string failure = "failed to parse settings raw\n";
  EXPECT_EQ(reports, failure + "0" + failure + "0" + failure + "0" + failure + "0000");
}

TEST(JsonParseMessageSettings, ReadsTheSituationsCodes) {
  const std::string text =
      R"({"rulActive": [{"codeMessage": "3001", "recommendations": [9]}], "corridorActive": [)"
      R"( {"codeMessage": "1001", "recommendations": [1, 2.9, -3.7, "4", null, 5e9, 1e999, 6]},)"
      R"( {"codeMessage": "1002"}, {"codeMessage": "1003", "recommendations": 7},)"
      R"( {"codeMessage": 1004, "recommendations": [1]}, {"recommendations": [1]}, 12, "1005",)"
      R"( {"codeMessage": "1006", "recommendations": [1]},)"
      R"( {"codeMessage": "1006", "recommendations": [2, 3]}]})";
  Codes codes;
  EXPECT_EQ(printed([&] { codes = json_parse_message_settings(text, "corridorActive"); }), "");
  EXPECT_EQ(codes, (Codes{{"1001", {1, 2, -3, 6}}, {"1002", {}}, {"1003", {}}, {"1006", {2, 3}}}));
  EXPECT_EQ(json_parse_message_settings(text, "rulActive"), (Codes{{"3001", {9}}}));
  EXPECT_TRUE(
      json_parse_message_settings(text, "CorridorActive").empty() &&
      json_parse_message_settings(R"({"rulActive": {"codeMessage": "1"}})", "rulActive").empty() &&
      json_parse_message_settings("[1, 2]", "rulActive").empty());
  for (const char* bad : {"", "{\"rulActive\": [}", "{\"r\xc3\xbcl\": []}"}) {
    EXPECT_EQ(printed([&] { codes = json_parse_message_settings(bad, "rulActive"); }),
              "failed to parse message settings\n");
    EXPECT_TRUE(codes.empty());
  }
}

TEST(JsonParseVekSettings, SortsKeysByTheirJsonType) {
  Numbers numbers = {{"kept", {5}}, {"source", {5}}, {"calc_source", {1}}};
  std::map<std::string, std::string> texts = {{"kafka_topic", "old"}};
  std::map<std::string, bool> flags = {{"log", false}};
  // A number beyond long is ignored like null: the earlier value stays. Read digit by digit,
  // 9223372036854775808 lands above 2^63 and is beyond as well.
  EXPECT_EQ(printed([&] {
              json_parse_vek_settings(
                  R"({"source": [101, 102.9, -7.9, "x", null, 1e999, -1e19], "remainder": 1,)"
                  R"( "middle": -10.99, "kafka_topic": "vek", "log": TRUE, "kafka_enable": false,)"
                  R"( "extra": {"a": 1}, "calc_source": 1e19, "nothing": null, "empty": [],)"
                  R"( "top": 9223372036854775807, "low": -9223372036854775808, "big": -1e18})",
                  numbers, texts, flags);
            }),
            "");
  EXPECT_EQ(numbers, (Numbers{{"big", {-1000000000000000000L}},
                              {"calc_source", {1}},
                              {"empty", {}},
                              {"kept", {5}},
                              {"middle", {-10}},
                              {"remainder", {1}},
                              {"source", {101, 102, -7}}}));
  EXPECT_EQ(texts.at("kafka_topic") + std::to_string(flags.at("log")) +
                std::to_string(flags.at("kafka_enable")) + std::to_string(flags.size()),
            "vek102");
  for (const char* bad :
       {"", "[1]", "\"text\"", "42", "null", "{\"log\": tru}", "{\"kafka_topic\": \"\xd0\xb2\"}"}) {
    EXPECT_EQ(printed([&] { json_parse_vek_settings(bad, numbers, texts, flags); }),
              "failed to parse vek settings\n")
        << bad;
  }
  EXPECT_EQ(numbers.size() + texts.size() + flags.size(), 10u) << "the maps stay untouched";
}

TEST(SharedRecords, ModuleDataStartsAtZero) {
  // Readers leave fields alone where a column is NULL, so the defaults are what they keep; the
  // store always sets the module's keys, but a record made elsewhere holds no indeterminate one.
  const result_param p;
  const auto* m = new module_data;
  std::ostringstream out;
  for (const float value : {p.value, p.middle, p.trend, p.monotone}) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    out << std::hex << bits << std::dec << ",";
  }
  out << p.visualization_id << channel().active << calc_result().has_raw_data
      << visualization().type_corridor << m->id << m->source << m->type_module << m->gateway_id
      << m->broadcasting_period << m->data_in_utc_0;
  delete m;
  EXPECT_EQ(out.str(), "7fc00000,7fc00000,7fc00000,7fc00000,0111000000") << "quiet NaNs";
}

} // namespace
