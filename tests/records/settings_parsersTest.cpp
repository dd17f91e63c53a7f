#include "records/settings_parsers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Numbers = std::map<std::string, std::vector<long>>;
using Texts = std::map<std::string, std::string>;
using Flags = std::map<std::string, bool>;

void expectSetting(const param_setting& got, const std::string& name, double value,
                   const std::string& sub_1_packet = "") {
  EXPECT_EQ(got.name, name);
  EXPECT_EQ(got.value, value) << got.name;
  EXPECT_EQ(got.sub_1_packet, sub_1_packet) << got.name;
}

// ---- parse_param_settings: the positional scanner of PARAM_SETTINGS ----

TEST(ParseParamSettings, ReadsTheFieldLayout) {
  auto settings = parse_param_settings(
      R"([{"name_param": "ku_vx", "value": 1.5},{"name_param": "g_del", "value": null}])");
  ASSERT_EQ(settings.size(), 2u);
  expectSetting(settings[0], "ku_vx", 1.5);
  expectSetting(settings[1], "g_del", 0.0);

  settings =
      parse_param_settings(R"([{"name_param": "freq", "sub_1_packet": "A", "value": -2.5e-3}, )"
                           R"({"name_param": "gain", "value": 3, "sub_1_packet": "B"}])");
  ASSERT_EQ(settings.size(), 2u);
  expectSetting(settings[0], "freq", -0.0025, "A");
  // The last key runs to the end of the object; its closing quote is dropped by length.
  expectSetting(settings[1], "gain", 3.0, "B");

  // Key order is free: the "," search starts at each key.
  settings = parse_param_settings(R"([{"value": 3.25, "name_param": "rpm"}])");
  ASSERT_EQ(settings.size(), 1u);
  expectSetting(settings[0], "rpm", 3.25);

  // Module tools write names in UTF-8; the scanner keeps the bytes.
  settings = parse_param_settings("[{\"name_param\": \"\xd1\x81\xd0\xba\", \"value\": 5}]");
  ASSERT_EQ(settings.size(), 1u);
  expectSetting(settings[0], "\xd1\x81\xd0\xba", 5.0);
}

TEST(ParseParamSettings, ValuesConvertAsCorrectlyRoundedDoubles) {
  // Unlike the JSON reader, this scanner converts with the C library: 0.3 is the double
  // nearest to 0.3, and 1e-6 is exact to the last bit.
  auto settings = parse_param_settings(
      R"([{"name_param": "a", "value": 0.3},{"name_param": "b", "value": 1e-6}])");
  ASSERT_EQ(settings.size(), 2u);
  EXPECT_EQ(settings[0].value, 0x1.3333333333333p-2);
  EXPECT_EQ(settings[1].value, 1e-6);

  // Leading blanks are skipped and what follows the number is ignored.
  settings = parse_param_settings(
      R"([{"name_param": "a", "value":    2.5},{"name_param": "b", "value": 7 },)"
      R"({"name_param": "c", "value": 1.5abc}])");
  ASSERT_EQ(settings.size(), 3u);
  EXPECT_EQ(settings[0].value, 2.5);
  EXPECT_EQ(settings[1].value, 7.0);
  EXPECT_EQ(settings[2].value, 1.5);
}

TEST(ParseParamSettings, ValueWithoutBlankLosesFirstDigit) {
  // The scanner skips one character after the colon, whatever it is.
  auto settings =
      parse_param_settings(R"([{"name_param": "a", "value":15},{"name_param": "b", "value":1.5}])");
  ASSERT_EQ(settings.size(), 2u);
  EXPECT_EQ(settings[0].value, 5.0);
  EXPECT_EQ(settings[1].value, 0.5);
  // A name without the blank loses its first letter and keeps the closing quote's place.
  settings = parse_param_settings(R"([{"name_param":"abc", "value": 1}])");
  ASSERT_EQ(settings.size(), 1u);
  EXPECT_EQ(settings[0].name, "bc");
}

TEST(ParseParamSettings, OddButAcceptedTexts) {
  // A comma inside the name cuts it, one character short of the comma.
  auto settings = parse_param_settings(R"([{"name_param": "ab,c", "value": 1}])");
  ASSERT_EQ(settings.size(), 1u);
  EXPECT_EQ(settings[0].name, "a");
  // An empty value reads as 0.0; a missing name stays empty and the setting is kept.
  settings = parse_param_settings(R"([{"value": , "name_param": "a"},{"value": 4}])");
  ASSERT_EQ(settings.size(), 2u);
  expectSetting(settings[0], "a", 0.0);
  expectSetting(settings[1], "", 4.0);
  // null must meet the brace or comma at once to mean 0.0.
  settings = parse_param_settings(R"([{"value": null, "name_param": "a"}])");
  ASSERT_EQ(settings.size(), 1u);
  EXPECT_EQ(settings[0].value, 0.0);
}

TEST(ParseParamSettings, TooShortOrEmptyGivesNoSettings) {
  for (const char* text : {"", "[", "x", "[]", "{}"}) {
    SCOPED_TRACE(text);
    EXPECT_TRUE(parse_param_settings(text).empty());
  }
}

TEST(ParseParamSettings, ThrowsWhereTheLayoutIsBroken) {
  // No value key: the text from the object's second character is no number.
  EXPECT_THROW(parse_param_settings(R"([{"name_param": "a"}])"), std::invalid_argument);
  EXPECT_THROW(parse_param_settings(R"([{"name_param": "a", "value": abc}])"),
               std::invalid_argument);
  EXPECT_THROW(parse_param_settings(R"([{"name_param": "a", "value": null }])"),
               std::invalid_argument);
  EXPECT_THROW(parse_param_settings(R"([{"name_param": "a", "value": 1e999}])"), std::out_of_range);
  EXPECT_THROW(parse_param_settings(R"([{"name_param": "a", "value": 1e-310}])"),
               std::out_of_range);
  // More than one character after the last "}": no further "{" is found.
  EXPECT_THROW(parse_param_settings("[{\"name_param\": \"a\", \"value\": 1}]\n"),
               std::out_of_range);
  EXPECT_THROW(parse_param_settings(R"([{"name_param": "a", "value": 1} ])"), std::out_of_range);
  EXPECT_THROW(parse_param_settings("[ ]"), std::out_of_range);
  // A bare object: the "{" at position 0 is never taken.
  EXPECT_THROW(parse_param_settings(R"({"name_param": "a", "value": 1})"), std::out_of_range);
  // A colon at the very end of an object leaves nothing to start from.
  EXPECT_THROW(parse_param_settings(R"([{"name_param":}])"), std::out_of_range);
}

// ---- json_parse_settings_raw: fu_raw.settings and TU_ERROR in JSON form ----

TEST(JsonParseSettingsRaw, ReadsNamesAndNumbers) {
  testing::internal::CaptureStdout();
  auto values = json_parse_settings_raw(
      R"([{"name_param": "k_gain", "value": 0.3, "unit": "g"},)"
      R"( {"name_param": "rate", "value": 25.6e3},)"
      R"( {"name_param": "rate2", "value": "25"},)"
      R"( {"name_param": "", "value": 1},)"
      R"( {"name_param": 7, "value": 1},)"
      R"( {"value": 2},)"
      R"( {"name_param": "dup", "value": 1}, {"name_param": "dup", "value": -2},)"
      R"( {"name_param": "dup", "value": null}, 5, "x", [1]])"
      "\n");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(values.size(), 3u);
  // Numbers follow the digit-by-digit rule: 3 * 0.1 lands one bit above 0.3.
  EXPECT_EQ(values["k_gain"], 0x1.3333333333334p-2);
  // (25 + 6 * 0.1) * 10 * 10 * 10
  EXPECT_EQ(values["rate"], 25600.0);
  EXPECT_EQ(values["dup"], -2.0);
  EXPECT_EQ(values.count("rate2"), 0u);
}

TEST(JsonParseSettingsRaw, UnreadableTextReportsAndGivesNothing) {
  const char* texts[] = {"", "[{\"name_param\": \"a\", \"value\": 1},]", "not json",
                         "[{\"name_param\": \"\xd1\x81\", \"value\": 1}]"};
  for (const char* text : texts) {
    SCOPED_TRACE(text);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(json_parse_settings_raw(text).empty());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "failed to parse settings raw\n");
  }
  // Valid JSON of another shape is empty, without a word.
  for (const char* text : {"{\"name_param\": \"a\", \"value\": 1}", "3", "null", "[]"}) {
    SCOPED_TRACE(text);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(json_parse_settings_raw(text).empty());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  }
}

// ---- json_parse_message_settings: VISUALIZATION.MESSAGE_SETTINGS ----

TEST(JsonParseMessageSettings, ReadsTheSituationsCodes) {
  const std::string text =
      R"({"rulActive": [{"codeMessage": "3001", "recommendations": [9]}],)"
      R"( "corridorActive": [)"
      R"(  {"codeMessage": "1001", "recommendations": [1, 2.9, -3.7, "4", null, 5e9, 1e999, 6]},)"
      R"(  {"codeMessage": "1002"},)"
      R"(  {"codeMessage": "1003", "recommendations": 7},)"
      R"(  {"codeMessage": 1004, "recommendations": [1]},)"
      R"(  {"recommendations": [1]}, 12, "1005",)"
      R"(  {"codeMessage": "1006", "recommendations": [1]},)"
      R"(  {"codeMessage": "1006", "recommendations": [2, 3]}]})";
  testing::internal::CaptureStdout();
  auto codes = json_parse_message_settings(text, "corridorActive");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  const std::map<std::string, std::vector<int>> expected = {
      {"1001", {1, 2, -3, 6}}, {"1002", {}}, {"1003", {}}, {"1006", {2, 3}}};
  EXPECT_EQ(codes, expected);

  EXPECT_EQ(json_parse_message_settings(text, "rulActive"),
            (std::map<std::string, std::vector<int>>{{"3001", {9}}}));
  // Situations are matched exactly.
  EXPECT_TRUE(json_parse_message_settings(text, "CorridorActive").empty());
  EXPECT_TRUE(
      json_parse_message_settings(R"({"rulActive": {"codeMessage": "1"}})", "rulActive").empty());
  EXPECT_TRUE(json_parse_message_settings("[1, 2]", "rulActive").empty());
}

TEST(JsonParseMessageSettings, UnreadableTextReportsAndGivesNothing) {
  for (const char* text : {"", "{\"rulActive\": [}", "{\"r\xc3\xbcl\": []}"}) {
    SCOPED_TRACE(text);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(json_parse_message_settings(text, "rulActive").empty());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "failed to parse message settings\n");
  }
}

// ---- json_parse_vek_settings: VEK_CALCULATION.settings ----

TEST(JsonParseVekSettings, SortsKeysByTheirJsonType) {
  Numbers numbers;
  Texts texts;
  Flags flags;
  testing::internal::CaptureStdout();
  json_parse_vek_settings(R"({"source": [101, 102.9, -7.9, "x", null, 1e999], "calc_source": 2,)"
                          R"( "remainder": 1, "middle": 10.99, "analyze_module": 1200,)"
                          R"( "control_task": 300, "kafka_client_id": 3, "kafka_topic": "vek",)"
                          R"( "log": TRUE, "kafka_enable": false, "extra": {"a": 1},)"
                          R"( "nothing": null, "empty": [], "huge": 1e300})",
                          numbers, texts, flags);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  const Numbers expected_numbers = {{"source", {101, 102, -7}}, {"calc_source", {2}},
                                    {"remainder", {1}},         {"middle", {10}},
                                    {"analyze_module", {1200}}, {"control_task", {300}},
                                    {"kafka_client_id", {3}},   {"empty", {}}};
  EXPECT_EQ(numbers, expected_numbers);
  EXPECT_EQ(texts, (Texts{{"kafka_topic", "vek"}}));
  EXPECT_EQ(flags, (Flags{{"log", true}, {"kafka_enable", false}}));
}

TEST(JsonParseVekSettings, LaterDocumentsReplaceOnlyTheirKeys) {
  Numbers numbers = {{"calc_source", {1}}, {"source", {5}}};
  Texts texts = {{"kafka_topic", "old"}};
  Flags flags = {{"log", true}};
  json_parse_vek_settings(R"({"calc_source": -3, "log": false, "source": 42})", numbers, texts,
                          flags);
  EXPECT_EQ(numbers, (Numbers{{"calc_source", {-3}}, {"source", {42}}}));
  EXPECT_EQ(texts, (Texts{{"kafka_topic", "old"}}));
  EXPECT_EQ(flags, (Flags{{"log", false}}));
  // A number beyond long is ignored like null: the earlier value stays. Read digit by digit,
  // 9223372036854775808 lands above 2^63 and is beyond as well.
  json_parse_vek_settings(
      R"({"calc_source": 1e19, "source": -1e19, "remainder": 9223372036854775807,)"
      R"( "analyze_module": -9223372036854775808, "middle": -1e18})",
      numbers, texts, flags);
  EXPECT_EQ(
      numbers,
      (Numbers{{"calc_source", {-3}}, {"source", {42}}, {"middle", {-1000000000000000000L}}}));
}

TEST(JsonParseVekSettings, UnreadableOrNonObjectLeavesTheMaps) {
  for (const char* text :
       {"", "[1]", "\"text\"", "42", "null", "{\"log\": tru}", "{\"kafka_topic\": \"\xd0\xb2\"}"}) {
    SCOPED_TRACE(text);
    Numbers numbers = {{"middle", {5}}};
    Texts texts = {{"kafka_topic", "t"}};
    Flags flags = {{"log", true}};
    testing::internal::CaptureStdout();
    json_parse_vek_settings(text, numbers, texts, flags);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "failed to parse vek settings\n");
    EXPECT_EQ(numbers, (Numbers{{"middle", {5}}}));
    EXPECT_EQ(texts, (Texts{{"kafka_topic", "t"}}));
    EXPECT_EQ(flags, (Flags{{"log", true}}));
  }
}

} // namespace
