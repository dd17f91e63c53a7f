// Decoding of fu_raw pieces: the modules' encoding (PlantBuilder's encoders) read back for every
// sample format and layout, hand-written texts read to hand-worked numbers, and the damaged
// texts a gateway can deliver.
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "PipelineFixture.h"

namespace {

using vek_test::encodeNamedValue;
using vek_test::encodeSamples;
using vek_test::encodeTimedSamples;
using vek_test::TimedSample;

raw piece(int param_type_id, int c_type, std::string data, std::string sub_channel = "") {
  raw r;
  r.param_type_id = param_type_id;
  r.c_type = c_type;
  r.data = std::move(data);
  r.sub_channel = std::move(sub_channel);
  return r;
}

struct FormatCase {
  int c_type;
  std::vector<double> values; // each exactly representable in the format
};

// Extremes and a sign change of each format; 7 carries float values that survive the
// narrowing exactly.
const std::vector<FormatCase> kFormats = {
    {1, {0.0, 1.0, 256.0, 65535.0}},
    {2, {0.0, -1.0, 32767.0, -32768.0}},
    {3, {0.0, 65536.0, 16777215.0}},
    {4, {0.0, 8388608.0, 16777215.0}},
    {5, {0.0, 1.0, 4294967295.0}},
    {6, {-2147483648.0, -1.0, 2147483647.0}},
    {7, {1.5, -0.25, static_cast<double>(3.0e38f), static_cast<double>(0.1f)}},
    {8, {0.0, 17.0, 255.0}},
};

TEST(DataParsingDecode, PlainSequencesOfEveryFormatReadBackWhatTheModuleSent) {
  // Layouts that carry a plain sequence: below 7 (negative ids too), 13 humidity, 14 valve.
  for (int layout : {-3, 0, 4, 6, 13, 14}) {
    for (const FormatCase& format : kFormats) {
      SCOPED_TRACE("param_type_id " + std::to_string(layout) + ", c_type " +
                   std::to_string(format.c_type));
      raw r = piece(layout, format.c_type, encodeSamples(format.values, format.c_type), "x");
      EXPECT_TRUE(DataParsing::decodeRaw(r));
      EXPECT_EQ(r.values, format.values);
      EXPECT_TRUE(r.timed_values.empty());
    }
  }
  // Layouts that decode nothing: 16 and from 19 on.
  for (int layout : {16, 19, 40}) {
    SCOPED_TRACE("param_type_id " + std::to_string(layout));
    raw r = piece(layout, 1, encodeSamples({1.0, 2.0}, 1));
    EXPECT_TRUE(DataParsing::decodeRaw(r));
    EXPECT_TRUE(r.values.empty());
    EXPECT_TRUE(r.timed_values.empty());
  }
}

TEST(DataParsingDecode, BytesLieLeastSignificantFirst) {
  // "0100": the low byte 01 comes first, so the number is 0x0001.
  raw one = piece(4, 1, "0x0100");
  DataParsing::decodeRaw(one);
  EXPECT_EQ(one.values, std::vector<double>({1.0}));
  // ffff as signed 16 bits is -1; as unsigned 65535.
  raw minus = piece(4, 2, "0xffff");
  DataParsing::decodeRaw(minus);
  EXPECT_EQ(minus.values, std::vector<double>({-1.0}));
  // 24 bits ff ff ff read as the low 32 bits of a signed number: 16777215, never negative.
  raw wide = piece(4, 4, "0xFFFFFF");
  DataParsing::decodeRaw(wide);
  EXPECT_EQ(wide.values, std::vector<double>({16777215.0}));
  // 0000c03f is the single 0x3fc00000 = 1.5; 00000080 is 0x80000000, as signed the smallest
  // 32-bit number.
  raw single = piece(4, 7, "0x0000c03f");
  DataParsing::decodeRaw(single);
  EXPECT_EQ(single.values, std::vector<double>({1.5}));
  raw smallest = piece(4, 6, "0x00000080");
  DataParsing::decodeRaw(smallest);
  EXPECT_EQ(smallest.values, std::vector<double>({-2147483648.0}));
  // An unknown format reads two characters per value as NaN, without looking at them.
  raw unknown = piece(4, 9, "0xzz01");
  DataParsing::decodeRaw(unknown);
  ASSERT_EQ(unknown.values.size(), 2u);
  EXPECT_TRUE(std::isnan(unknown.values[0]) && std::isnan(unknown.values[1]));
}

TEST(DataParsingDecode, TimedRecordsAreKeyedBySecondsOrMilliseconds) {
  for (int layout : {7, 8, 9, 10, 11, 12, 17, 18}) {
    SCOPED_TRACE("param_type_id " + std::to_string(layout));
    // 3000000000 is the last stamp read as seconds: 2065-01-24 05:20:00 UTC. 3000000001 is
    // milliseconds: 3000000 s and 1 ms after the epoch, 34 days 17:20:00 into 1970.
    // 1700000000000 ms is the exact second 2023-11-14 22:13:20, marked ".0"; five ms later the
    // fraction is ".5", without zero padding.
    const std::vector<TimedSample> samples = {{3000000000ULL, 10.0},
                                              {3000000001ULL, 11.0},
                                              {1700000000000ULL, 12.0},
                                              {1700000000005ULL, 13.0},
                                              {3000000000ULL, 14.0}};
    raw r = piece(layout, 2, encodeTimedSamples(samples, 2), "t");
    EXPECT_TRUE(DataParsing::decodeRaw(r));
    EXPECT_TRUE(r.values.empty());
    const std::map<std::string, double> expected = {
        {"2065-1-24 5:20:0", 14.0}, // a repeated stamp overwrites the earlier value
        {"1970-2-4 17:20:0.1", 11.0},
        {"2023-11-14 22:13:20.0", 12.0},
        {"2023-11-14 22:13:20.5", 13.0}};
    EXPECT_EQ(r.timed_values, expected);
  }
  // A stamp with its top bit set is a count of milliseconds, not a time before 1970:
  // 2^63 ms leaves 9223372036854775808 % 1000 = 808 ms.
  raw top = piece(9, 1, encodeTimedSamples({{9223372036854775808ULL, 1.0}}, 1));
  DataParsing::decodeRaw(top);
  ASSERT_EQ(top.timed_values.size(), 1u);
  const std::string key = top.timed_values.begin()->first;
  EXPECT_EQ(key.substr(key.size() - 4), ".808");
  // Each format's width follows the 16 stamp characters.
  for (const FormatCase& format : kFormats) {
    SCOPED_TRACE("c_type " + std::to_string(format.c_type));
    std::vector<TimedSample> samples;
    for (std::size_t k = 0; k < format.values.size(); ++k) {
      samples.push_back({1000ULL + k, format.values[k]});
    }
    raw r = piece(9, format.c_type, encodeTimedSamples(samples, format.c_type));
    DataParsing::decodeRaw(r);
    std::vector<double> read;
    for (const auto& entry : r.timed_values) {
      read.push_back(entry.second);
    }
    EXPECT_EQ(read, format.values); // stamps 1000.. sort as their keys do
  }
}

TEST(DataParsingDecode, NamedValueReplacesDataWithTheName) {
  raw battery = piece(15, 5, encodeNamedValue("U_BATTERY", 87.0, 5));
  EXPECT_TRUE(DataParsing::decodeRaw(battery));
  EXPECT_EQ(battery.data, "U_BATTERY");
  EXPECT_EQ(battery.values, std::vector<double>({87.0}));

  raw temperature = piece(15, 7, encodeNamedValue("TEMPERATURE", -12.25, 7));
  DataParsing::decodeRaw(temperature);
  EXPECT_EQ(temperature.data, "TEMPERATURE");
  EXPECT_EQ(temperature.values, std::vector<double>({-12.25}));

  // Too short to hold the four value bytes: neither a name nor a value.
  raw stub = piece(15, 5, "0x123456");
  EXPECT_TRUE(DataParsing::decodeRaw(stub));
  EXPECT_EQ(stub.data, "");
  EXPECT_TRUE(stub.values.empty());
}

TEST(DataParsingDecode, OnlyWholeSamplesAreRead) {
  // Prefix, one whole 16-bit sample and three characters more.
  const std::string ragged = encodeSamples({5.0}, 1) + "123";
  raw named = piece(4, 1, ragged, "x");
  EXPECT_FALSE(DataParsing::decodeRaw(named)) << "a named sub-channel must carry whole samples";
  EXPECT_EQ(named.values, std::vector<double>({5.0}));
  raw whole_module = piece(4, 1, ragged);
  EXPECT_TRUE(DataParsing::decodeRaw(whole_module)) << "a piece without sub-channel is not tested";
  EXPECT_EQ(whole_module.values, std::vector<double>({5.0}));

  // Nothing after the prefix is a whole number of samples: no values, and no complaint.
  raw prefix_only = piece(4, 5, "0x", "x");
  EXPECT_TRUE(DataParsing::decodeRaw(prefix_only));
  EXPECT_TRUE(prefix_only.values.empty());
  // Shorter than the prefix: nothing whole in it.
  raw empty_named = piece(4, 1, "", "x");
  EXPECT_FALSE(DataParsing::decodeRaw(empty_named));
  raw empty = piece(4, 1, "");
  EXPECT_TRUE(DataParsing::decodeRaw(empty));
  EXPECT_TRUE(empty.values.empty());

  // A timed record cut inside its value is dropped.
  raw cut = piece(9, 5, encodeTimedSamples({{100, 1.0}, {200, 2.0}}, 5));
  cut.data.resize(cut.data.size() - 3);
  DataParsing::decodeRaw(cut);
  EXPECT_EQ(cut.timed_values.size(), 1u);
}

TEST(DataParsingDecode, TextThatIsNotHexadecimalIsRefused) {
  for (const char* data : {"0x01zz", "0x 001", "0x-001", "0x+001", "0x0x01"}) {
    SCOPED_TRACE(data);
    raw r = piece(4, 1, data);
    EXPECT_THROW(DataParsing::decodeRaw(r), std::invalid_argument);
  }
  raw stamp = piece(9, 1,
                    "0x00000000000000g0"
                    "0100");
  EXPECT_THROW(DataParsing::decodeRaw(stamp), std::invalid_argument);
  raw name = piece(15, 5,
                   "0x4q"
                   "01000000");
  EXPECT_THROW(DataParsing::decodeRaw(name), std::invalid_argument);
  EXPECT_THROW(DataParsing::string_to_double("", 1), std::invalid_argument);
  EXPECT_TRUE(std::isnan(DataParsing::string_to_double("", 9)));
}

TEST(DataParsingDecode, SettingsOfAPieceAreParsed) {
  raw r = piece(4, 1, encodeSamples({1.0}, 1));
  r.settings = vek_test::settingsRaw({{"gain", 2.5}, {"rate", 25600.0}});
  DataParsing::decodeRaw(r);
  const std::map<std::string, double> expected = {{"gain", 2.5}, {"rate", 25600.0}};
  EXPECT_EQ(r.settings_values, expected);
}

class DataParsingReadData : public vek_test::PipelineTest {};

TEST_F(DataParsingReadData, DecodesThePiecesOfTheRowAndFlagsMissingData) {
  using namespace vek_test;
  PlantBuilder plant = machine(42, 103);
  plant
      .add(MeasurementRow(1001, 42)
               .module(103, 1)
               .at("2024-05-01 10:00:00")
               .raw(RawRow(4, 2).samples({23.0, -4.0}))
               .raw(RawRow(9, 5).subChannel("t").timed({{1700000000, 7.0}})))
      .add(MeasurementRow(1002, 42).module(103, 1).at("2024-05-01 10:01:00"))
      .add(MeasurementRow(1003, 42)
               .module(103, 1)
               .at("2024-05-01 10:02:00")
               .raw(RawRow(4, 1).subChannel("x").data("0x01000")))
      .add(MeasurementRow(1004, 42)
               .module(103, 1)
               .at("2024-05-01 10:03:00")
               .raw(RawRow(4, 1).data("0x01zz")));
  plant.insert(sql());

  Measurement full = load(1001);
  full->readData();
  EXPECT_FALSE(full->no_data);
  ASSERT_EQ(full->raws.size(), 2u);
  EXPECT_EQ(full->raws[0].values, std::vector<double>({23.0, -4.0}));
  EXPECT_EQ(full->raws[1].timed_values.at("2023-11-14 22:13:20"), 7.0);

  Measurement empty = load(1002);
  empty->readData();
  EXPECT_TRUE(empty->no_data);

  Measurement ragged = load(1003);
  ragged->readData();
  EXPECT_TRUE(ragged->no_data);

  Measurement damaged = load(1004);
  EXPECT_THROW(damaged->readData(), std::invalid_argument);
}

} // namespace
