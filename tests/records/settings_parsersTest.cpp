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

using Numbers = std::map<std::string, std::vector<long>>;
using Texts = std::map<std::string, std::string>;
using Flags = std::map<std::string, bool>;

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
       R"("value": 3, "sub_1_packet": "B"}])",
       "f=-0.0025000000000000001/A;g=3/B;"},
      {R"([{"value": 3.25, "name_param": "rpm"}])", "rpm=3.25/;"},
      {"[{\"name_param\": \"\xd1\x81\", \"value\": 5}]", "\xd1\x81=5/;"},
      {R"([{"name_param": "a", "value": 0.3},{"name_param": "b", "value": 1e-6}])",
       "a=0.29999999999999999/;b=9.9999999999999995e-07/;"},
      {R"([{"name_param": "a", "value":    2.5},{"name_param": "b", "value": 7 },)"
       R"({"name_param": "c", "value": 1.5abc}])",
       "a=2.5/;b=7/;c=1.5/;"},
      // Without the blank after the colon the first character is lost.
      {R"([{"name_param": "a", "value":15},{"name_param":"abc", "value":1.5}])", "a=5/;bc=0.5/;"},
      {R"([{"name_param": "ab,c", "value": 1}])", "a=1/;"},
      {R"([{"value": , "name_param": "a"},{"value": 4}])", "a=0/;=4/;"},
      {R"([{"value": null, "name_param": "a"}])", "a=0/;"},
      {"", ""},
      {"[", ""},
      {"x", ""},
      {"[]", ""},
      {"{}", ""},
      {R"([{"name_param": "a"}])", "invalid"},
      {R"([{"name_param": "a", "value": abc}])", "invalid"},
      {R"([{"name_param": "a", "value": null }])", "invalid"},
      {R"([{"name_param": "a", "value": 1e999}])", "range"},
      {R"([{"name_param": "a", "value": 1e-310}])", "range"},
      {"[{\"name_param\": \"a\", \"value\": 1}]\n", "range"},
      {R"([{"name_param": "a", "value": 1} ])", "range"},
      {"[ ]", "range"},
      {R"({"name_param": "a", "value": 1})", "range"},
      {R"([{"name_param":}])", "range"}};
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(settings(text), expected) << text;
  }
}

TEST(JsonParseSettingsRaw, UnreadableTextReportsAndGivesNothing) {
  std::map<std::string, double> values;
  EXPECT_EQ(
      printed([&] {
        values = json_parse_settings_raw(
            R"([{"name_param": "k_gain", "value": 0.3, "unit": "g"},)"
            R"( {"name_param": "rate", "value": 25.6e3}, {"name_param": "r2", "value": "25"},)"
            R"( {"name_param": "", "value": 1}, {"name_param": 7, "value": 1}, {"value": 2},)"
            R"( {"name_param": "dup", "value": 1}, {"name_param": "dup", "value": -2},)"
            R"( {"name_param": "dup", "value": null}, 5, "x", [1]])");
      }),
      "");
  // Numbers by the digit-by-digit rule: 3 * 0.1 lands one bit above 0.3.
  EXPECT_EQ(values, (std::map<std::string, double>{
                        {"dup", -2.0}, {"k_gain", 0x1.3333333333334p-2}, {"rate", 25600.0}}));
  // Valid JSON of another shape is empty without a word.
  const char* const failure = "failed to parse settings raw\n";
  const std::pair<const char*, const char*> others[] = {
      {"", failure},
      {"[{\"name_param\": \"a\", \"value\": 1},]", failure},
      {"not json", failure},
      {"[{\"name_param\": \"\xd1\x81\", \"value\": 1}]", failure},
      {"{\"name_param\": 1}", ""},
      {"3", ""},
      {"null", ""},
      {"[]", ""}};
  for (const auto& [text, report] : others) {
    EXPECT_EQ(printed([&] { values = json_parse_settings_raw(text); }), report) << text;
    EXPECT_TRUE(values.empty()) << text;
  }
}

TEST(JsonParseMessageSettings, ReadsTheSituationsCodes) {
  const std::string text =
      R"({"rulActive": [{"codeMessage": "3001", "recommendations": [9]}], "corridorActive": [)"
      R"( {"codeMessage": "1001", "recommendations": [1, 2.9, -3.7, "4", null, 5e9, 1e999, 6]},)"
      R"( {"codeMessage": "1002"}, {"codeMessage": "1003", "recommendations": 7},)"
      R"( {"codeMessage": 1004, "recommendations": [1]}, {"recommendations": [1]}, 12, "1005",)"
      R"( {"codeMessage": "1006", "recommendations": [1]},)"
      R"( {"codeMessage": "1006", "recommendations": [2, 3]}]})";
  using Codes = std::map<std::string, std::vector<int>>;
  Codes codes;
  EXPECT_EQ(printed([&] { codes = json_parse_message_settings(text, "corridorActive"); }), "");
  EXPECT_EQ(codes, (Codes{{"1001", {1, 2, -3, 6}}, {"1002", {}}, {"1003", {}}, {"1006", {2, 3}}}));
  EXPECT_EQ(json_parse_message_settings(text, "rulActive"), (Codes{{"3001", {9}}}));
  EXPECT_TRUE(json_parse_message_settings(text, "CorridorActive").empty());
  EXPECT_TRUE(
      json_parse_message_settings(R"({"rulActive": {"codeMessage": "1"}})", "rulActive").empty());
  EXPECT_TRUE(json_parse_message_settings("[1, 2]", "rulActive").empty());
  for (const char* bad : {"", "{\"rulActive\": [}", "{\"r\xc3\xbcl\": []}"}) {
    EXPECT_EQ(printed([&] { codes = json_parse_message_settings(bad, "rulActive"); }),
              "failed to parse message settings\n");
    EXPECT_TRUE(codes.empty());
  }
}

TEST(JsonParseVekSettings, SortsKeysByTheirJsonType) {
  Numbers numbers = {{"kept", {5}}, {"source", {5}}, {"calc_source", {1}}};
  Texts texts = {{"kafka_topic", "old"}};
  Flags flags = {{"log", false}};
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
  EXPECT_EQ(texts, (Texts{{"kafka_topic", "vek"}}));
  EXPECT_EQ(flags, (Flags{{"kafka_enable", false}, {"log", true}}));
  for (const char* bad :
       {"", "[1]", "\"text\"", "42", "null", "{\"log\": tru}", "{\"kafka_topic\": \"\xd0\xb2\"}"}) {
    EXPECT_EQ(printed([&] { json_parse_vek_settings(bad, numbers, texts, flags); }),
              "failed to parse vek settings\n")
        << bad;
  }
  EXPECT_EQ(numbers.size() + texts.size() + flags.size(), 10u) << "the maps stay untouched";
}

std::uint32_t bitsOf(float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

TEST(SharedRecords, ModuleDataStartsAtZero) {
  // Readers leave fields alone where a column is NULL, so the defaults are what they keep.
  const result_param p;
  EXPECT_EQ(std::to_string(bitsOf(p.value)) + std::to_string(bitsOf(p.middle)) +
                std::to_string(bitsOf(p.trend)) + std::to_string(bitsOf(p.monotone)),
            "2143289344214328934421432893442143289344")
      << "the quiet NaN, four times";
  EXPECT_EQ(p.visualization_id, 0);
  EXPECT_TRUE(channel().active && calc_result().has_raw_data);
  EXPECT_EQ(visualization().type_corridor, 1);
  // The store always sets the module's keys; a record made elsewhere holds no indeterminate one.
  const auto* m = new module_data;
  EXPECT_EQ(std::to_string(m->id) + std::to_string(m->source) + std::to_string(m->type_module) +
                std::to_string(m->gateway_id) + std::to_string(m->broadcasting_period) +
                std::to_string(m->data_in_utc_0),
            "000000");
  delete m;
}

} // namespace
