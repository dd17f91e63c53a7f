// The plant builder's encoders against hand-worked texts, an independent decoder written from
// the modules' data layout and the service's own settings readers; its rows against the store.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "logging/time_helpers.h"
#include "records/settings_parsers.h"
#include "support/PlantBuilder.h"
#include "support/StoreTest.h"
#include "support/TypicalPlant.h"

namespace {

using namespace vek_test;

// One value read back as the modules' layout defines it: byte pairs from last to first, then
// the low 32 bits as the c_type says.
double decodeValue(const std::string& little_endian, int c_type) {
  std::string hex;
  for (std::size_t pair = little_endian.size(); pair >= 2; pair -= 2) {
    hex += little_endian.substr(pair - 2, 2);
  }
  const auto low = static_cast<std::uint32_t>(std::stoull(hex, nullptr, 16));
  switch (c_type) {
  case 1:
  case 3:
  case 5:
  case 8:
    return low;
  case 2:
    return static_cast<std::int16_t>(low);
  case 4:
  case 6:
    return static_cast<std::int32_t>(low);
  case 7: {
    float single = 0.0f;
    std::memcpy(&single, &low, sizeof single);
    return single;
  }
  default:
    return std::numeric_limits<double>::quiet_NaN();
  }
}

// A plain sequence read back: prefix skipped, then one value per width.
std::vector<double> decodeSamples(const std::string& data, int c_type) {
  const auto width = static_cast<std::size_t>(sampleWidth(c_type));
  std::vector<double> values;
  for (std::size_t at = 2; at + width <= data.size(); at += width) {
    values.push_back(decodeValue(data.substr(at, width), c_type));
  }
  return values;
}

TEST(PlantBuilderEncoders, HandWorkedTexts) {
  EXPECT_EQ(encodeSamples({1.0}, 1), "0x0100");
  EXPECT_EQ(encodeSamples({-1.0}, 2), "0xffff");
  EXPECT_EQ(encodeValue(0x123456, 3), "563412");
  EXPECT_EQ(encodeValue(0x123456, 4), "563412");
  EXPECT_EQ(encodeValue(0x12345678, 5), "78563412");
  EXPECT_EQ(encodeValue(-2.0, 6), "feffffff");
  EXPECT_EQ(encodeValue(1.0, 7), "0000803f");
  EXPECT_EQ(encodeValue(255.0, 8), "ff");
  EXPECT_EQ(encodeValue(12.0, 9), "00") << "an unknown type reads back as NaN whatever it holds";
  EXPECT_EQ(encodeValue(2.6, 1), "0300") << "integers are rounded to the nearest";
  EXPECT_EQ(encodeSamples({}, 1, "\\x"), "\\x");
  // 3000000001 = 0xB2D05E01, eight bytes least significant first, then the value.
  EXPECT_EQ(encodeTimedSamples({{3000000001ull, 1.0}}, 1), "0x015ed0b2000000000100");
  EXPECT_EQ(encodeNamedValue("AB", 1.0, 7), "0x41420000803f");
  EXPECT_EQ(telemetrySemicolons(21, -70, 5, 88), "21;-70;5;88");
}

TEST(PlantBuilderEncoders, EveryTypeReadsBackByTheModulesLayout) {
  const std::map<int, std::vector<double>> sweeps = {
      {1, {0, 1, 255, 256, 4660, 65535}},      {2, {-32768, -1, 0, 1, 32767}},
      {3, {0, 1, 0x123456, 0xffffff}},         {4, {0, 1, 0x123456, 0xffffff}},
      {5, {0, 1, 0x89abcdef, 4294967295.0}},   {6, {-2147483648.0, -1, 0, 1, 2147483647}},
      {7, {0.0, 1.5, -0.25, 3.0e38, 1.0e-30}}, {8, {0, 1, 127, 128, 255}},
  };
  for (const auto& [c_type, values] : sweeps) {
    SCOPED_TRACE(c_type);
    const std::string data = encodeSamples(values, c_type);
    EXPECT_EQ(data.size(), 2 + values.size() * static_cast<std::size_t>(sampleWidth(c_type)));
    const std::vector<double> back = decodeSamples(data, c_type);
    ASSERT_EQ(back.size(), values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
      SCOPED_TRACE(values[i]);
      // Single floats come back as the nearest float, the integers exactly.
      const double expected =
          c_type == 7 ? static_cast<double>(static_cast<float>(values[i])) : values[i];
      EXPECT_EQ(back[i], expected);
    }
  }
  // Values outside a type's range wrap as the module's integer would.
  EXPECT_EQ(decodeSamples(encodeSamples({-1.0}, 1), 1), std::vector<double>{65535.0});
  EXPECT_EQ(decodeSamples(encodeSamples({-1.0}, 4), 4), std::vector<double>{16777215.0});
  EXPECT_EQ(decodeSamples(encodeSamples({65536.0}, 2), 2), std::vector<double>{0.0});
  EXPECT_TRUE(std::isnan(decodeSamples(encodeSamples({5.0}, 0), 0).front()));
}

TEST(PlantBuilderEncoders, TimedRecordsAndNamedValuesReadBack) {
  const std::vector<TimedSample> samples = {
      {1714557600ull, 12.0}, {3000000000ull, -3.0}, {3000000001ull, 7.0}, {1714557600005ull, 8.0}};
  const std::string data = encodeTimedSamples(samples, 2);
  constexpr std::size_t kRecord = 16 + 4;
  ASSERT_EQ(data.size(), 2 + samples.size() * kRecord);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    SCOPED_TRACE(i);
    const std::string record = data.substr(2 + i * kRecord, kRecord);
    std::string stamp_hex;
    for (std::size_t pair = 16; pair >= 2; pair -= 2) {
      stamp_hex += record.substr(pair - 2, 2);
    }
    EXPECT_EQ(std::stoull(stamp_hex, nullptr, 16), samples[i].stamp);
    EXPECT_EQ(decodeValue(record.substr(16), 2), samples[i].value);
  }
  // The keys a decoder makes of them: seconds up to 3000000000, milliseconds above.
  EXPECT_EQ(sec_to_string(1714557600), "2024-5-1 10:0:0");
  EXPECT_EQ(sec_to_string(3000000), "1970-2-4 17:20:0") << "3000000001 ms is 3000000 s + 1 ms";

  const std::string named = encodeNamedValue("T_CASE", 36.6, 7);
  ASSERT_EQ(named.size(), 2 + 12 + 8u);
  std::string name;
  for (std::size_t at = 2; at < named.size() - 8; at += 2) {
    name += static_cast<char>(std::stoi(named.substr(at, 2), nullptr, 16));
  }
  EXPECT_EQ(name, "T_CASE");
  EXPECT_EQ(decodeValue(named.substr(named.size() - 8), 7), static_cast<double>(36.6f));
}

TEST(PlantBuilderEncoders, SettingsTextsReadBackThroughTheServiceReaders) {
  // Values the JSON reader takes exactly (it builds fractions digit by digit).
  const auto raw =
      json_parse_settings_raw(settingsRaw({{"temperature", 21}, {"rssi", -70}, {"k_x", 0.5}}));
  EXPECT_EQ(raw, (std::map<std::string, double>{{"temperature", 21}, {"rssi", -70}, {"k_x", 0.5}}));

  const auto settings =
      parse_param_settings(paramSettings({{"ku_vx", 1.5, ""},
                                          {"g_del", std::numeric_limits<double>::quiet_NaN(), ""},
                                          {"f_s", 25600, "ch1"}}));
  ASSERT_EQ(settings.size(), 3u);
  EXPECT_EQ(settings[0].name, "ku_vx");
  EXPECT_EQ(settings[0].value, 1.5);
  EXPECT_EQ(settings[1].name, "g_del");
  EXPECT_EQ(settings[1].value, 0.0) << "null reads as 0";
  EXPECT_EQ(settings[2].name, "f_s");
  EXPECT_EQ(settings[2].value, 25600.0);
  EXPECT_EQ(settings[2].sub_1_packet, "ch1");

  const std::string messages = messageSettings(
      {{"corridorActive", {{"41", {1, 2}}, {"42", {}}}}, {"rulActive", {{"51", {7}}}}});
  EXPECT_EQ(json_parse_message_settings(messages, "corridorActive"),
            (std::map<std::string, std::vector<int>>{{"41", {1, 2}}, {"42", {}}}));
  EXPECT_EQ(json_parse_message_settings(messages, "rulActive"),
            (std::map<std::string, std::vector<int>>{{"51", {7}}}));
}

class PlantBuilderTest : public StoreTest {
protected:
  void SetUp() override {
    StoreTest::SetUp();
    PlantBuilder::emptyTables(sql());
  }
};

TEST_F(PlantBuilderTest, RowsReadBackThroughTheStore) {
  PlantBuilder plant;
  plant.add(OrganizationRow("O'Neil works").utc("UTC-5:00"))
      .add(NodeRow(1, "O'Neil works"))
      .add(AggregateRow(3, 1).name("pump 'A'").equipmentType(1))
      .add(ControlPointRow(11, 3).weight(0.75))
      .add(ModuleRow(7, 42, 10).config(0xABC))
      .add(ChannelRow(100, 42).rawParam("x").axisOrder("zyx"))
      .add(BindingRow(100, 11))
      .add(VisualizationRow(500, 42, "V_RMS").channel(100).controlPoint(11).corridorType(2))
      .add(VisualizationRow(501, 42, "V_RMS").channel(100).controlPoint(11).typeParam(3))
      .add(MeasurementRow(1001, 42)
               .module(10, 3)
               .at("2024-05-01 10:00:00")
               .telemetry(21, -70, 5, 88)
               .raw(RawRow(4, 2).subChannel("x").samples({1.0, -1.0}))
               .raw(RawRow(15, 7).named("T_CASE", 36.5)));
  plant.insert(sql());

  unsigned int config = 0;
  int type = 0, gateway = 0, revision = 0, period = 0, aggregate_id = 0, id = 0;
  bool multichannel = false;
  std::string utc, alias;
  store().readModule(42, config, type, gateway, revision, period, multichannel, aggregate_id, utc,
                     alias, id);
  EXPECT_EQ(config, 0xABCu);
  EXPECT_EQ(aggregate_id, 3);
  EXPECT_EQ(utc, "-5:00");
  EXPECT_EQ(alias, "O'Neil works") << "quotes are doubled, not lost";
  EXPECT_EQ(scalar("SELECT name FROM aggregate"), "pump 'A'");

  std::vector<channel> channels;
  store().readChannel(42, channels);
  ASSERT_EQ(channels.size(), 1u);
  EXPECT_EQ(channels[0].control_point_id, 11);
  EXPECT_TRUE(channels[0].active);
  EXPECT_EQ(channels[0].raw_param, "x");
  EXPECT_EQ(channels[0].axis_order, "zyx");

  std::vector<visualization> visualizations;
  store().readVisualization(42, visualizations);
  ASSERT_EQ(visualizations.size(), 2u) << "one observed parameter serves both";
  EXPECT_EQ(visualizations[0].type_corridor, 2);
  EXPECT_EQ(visualizations[0].active, 1);
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM observed_param"), "1");

  param_info info;
  store().readParamInfo(1001, info);
  EXPECT_EQ(info.id, 1001);
  EXPECT_EQ(info.type_mod, 10);
  EXPECT_EQ(info.type_param, 3);
  EXPECT_EQ(info.tu_error, "21;-70;5;88");
  EXPECT_EQ(info.param_settings, "") << "columns not given are NULL";
  std::vector<raw> pieces;
  store().readRaw(1001, pieces);
  ASSERT_EQ(pieces.size(), 2u);
  const raw& samples = pieces[0].param_type_id == 4 ? pieces[0] : pieces[1];
  EXPECT_EQ(samples.c_type, 2);
  EXPECT_EQ(samples.sub_channel, "x");
  EXPECT_EQ(samples.data, "0x0100ffff");

  // A later batch may name the same parameter again.
  plant.clear();
  plant.add(VisualizationRow(502, 43, "V_RMS"));
  plant.insert(sql());
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM visualization"), "3");
}

TEST_F(PlantBuilderTest, SqlTextBuildsTheSameRows) {
  PlantBuilder plant;
  plant.add(ModuleRow(7, 42, 10).revision(2))
      .add(InstanceRow(1).settings("{\"log\": true}"))
      .add(RecalculationRow(4, 0, "2024-05-01 00:00:00", "2024-05-02 00:00:00"))
      .add(MessageRow("30").visible(false))
      .add(RecommendationRow(9, "30").typeMessage(3))
      .add(ModuleParamRow(10, 2, 3, "ku_vx", 1.25).typeSettings(1))
      .statement("UPDATE module SET connection_status = 2 WHERE id = 7");
  exec(plant.sql());
  EXPECT_EQ(scalar("SELECT revision || ' ' || connection_status FROM module"), "2 2");
  EXPECT_EQ(scalar("SELECT settings FROM vek_calculation"), "{\"log\": true}");
  EXPECT_EQ(scalar("SELECT state || ' ' || control FROM recalculation"), "1 1");
  EXPECT_EQ(scalar("SELECT visible FROM list_of_messages"), "f");
  EXPECT_EQ(scalar("SELECT enabled::text || ' ' || type_message_id FROM recommendation"), "true 3");
  std::vector<module_param> params;
  store().readModuleParam(10, 2, params);
  ASSERT_EQ(params.size(), 1u);
  EXPECT_EQ(params[0].name, "ku_vx");
  EXPECT_EQ(params[0].value, 1.25f);
  EXPECT_EQ(params[0].type_settings, 1);
}

// The whole standard output of a command.
std::string commandOutput(const std::string& command) {
  std::string output;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) {
    return output;
  }
  char buffer[65536];
  std::size_t got = 0;
  while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) {
    output.append(buffer, got);
  }
  pclose(pipe);
  return output;
}

TEST_F(PlantBuilderTest, TypicalPlantLoadsFromTheToolsSqlText) {
  TypicalPlant shape;
  shape.machines = 2;
  shape.measurements = 2;
  shape.samples = 64;
  shape.first_measurement_id = 101;
  shape.start = "2024-05-01 23:55:00";
  PlantBuilder builder;
  addTypicalPlant(builder, shape);

  const std::string text =
      commandOutput(std::string(VEK_PLANT_SQL) + " --machines 2 --measurements 2 --samples 64 "
                                                 "--first-id 101 --start '2024-05-01 23:55:00'");
  EXPECT_EQ(text, builder.sql()) << "the tool prints what the builder holds";
  exec(text);

  EXPECT_EQ(scalar("SELECT COUNT(*) || ' ' || MIN(id) || ' ' || MAX(id) FROM param_info"),
            "12 101 112");
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM fu_raw"), "28") << "six vibration pieces and T_CASE";
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM visualization"), "22");
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM observed_param"), "11");
  EXPECT_EQ(scalar("SELECT string_agg(DISTINCT receipt_date::text, ' ') FROM param_info"),
            "2024-05-01 23:55:00 2024-05-02 00:05:00");
  std::vector<raw> pieces;
  store().readRaw(101, pieces);
  ASSERT_EQ(pieces.size(), 6u);
  for (const auto& piece : pieces) {
    SCOPED_TRACE(piece.sub_channel);
    const std::size_t samples = piece.param_type_id == 2 ? 64 : 16;
    EXPECT_EQ(piece.data.size(), 2 + 4 * samples);
    EXPECT_EQ(json_parse_settings_raw(piece.settings).count("fd"), 1u);
  }
  param_info telemetry;
  store().readParamInfo(103, telemetry);
  EXPECT_EQ(telemetry.type_param, 0);
  EXPECT_EQ(telemetry.tu_error, "36;-70;3;36");

  EXPECT_NE(commandOutput(std::string(VEK_PLANT_SQL) + " --machines x 2>&1"), "");
}

} // namespace
