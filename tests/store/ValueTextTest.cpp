// The value texts that every statement of the store is built from, proven by what real
// statements do with them, and the reading rules, proven on real rows.
#include <clocale>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include "support/StoreTest.h"
#include "support/WorkPostgreSQLProbe.h"

namespace {

using Probe = WorkPostgreSQLProbe;
using vek_test::StoreTest;

class ValueText : public StoreTest {};

TEST_F(ValueText, FloatsSurviveTheRoundTripThroughRealAndDoubleColumns) {
  const std::vector<float> floats{0.1f,       -123.456f, 1e-7f, 3.4028235e38f,   1e6f,
                                  1000000.1f, 7.0f,      -0.0f, 1.17549435e-38f, 0.3333333f};
  for (const float value : floats) {
    SCOPED_TRACE(Probe::floatText(value));
    store().writeData("TRUNCATE result_temp");
    store().writeData("INSERT INTO result_temp (v_id, value) VALUES (1, " +
                      Probe::floatText(value) + ")");
    // float8 output shows every digit the stored single-precision value has.
    const double stored = std::stod(scalar("SELECT value::float8 FROM result_temp"));
    EXPECT_EQ(static_cast<float>(stored), value);
  }
  const std::vector<double> doubles{0.1, -2.5e-300, 1.7976931348623157e308, 1.0 / 3.0,
                                    123456789.123456789};
  for (const double value : doubles) {
    SCOPED_TRACE(Probe::floatText(value));
    exec("DELETE FROM visualization");
    store().writeData("INSERT INTO visualization (id, latest_raw_value) VALUES (1, " +
                      Probe::floatText(value) + ")");
    std::vector<std::vector<double>> table;
    store().readDataTable("SELECT latest_raw_value FROM visualization", table);
    ASSERT_EQ(table.size(), 1u);
    EXPECT_EQ(table[0][0], value);
  }
}

// German number formatting in both the C library and the C++ global locale: a decimal comma
// and a point between thousands, the case of a host set up in German or Russian.
struct DecimalComma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

// Puts the process into a decimal-comma locale for the life of the object and back after.
class DecimalCommaLocale {
public:
  DecimalCommaLocale() : saved_c(std::setlocale(LC_NUMERIC, nullptr)), saved_cpp(std::locale()) {
    // The C library's formatting needs a generated locale; where none exists the C++ locale
    // alone carries the comma.
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "ru_RU.UTF-8", "fr_FR.UTF-8"}) {
      if (std::setlocale(LC_NUMERIC, name) != nullptr) {
        c_name = name;
        break;
      }
    }
    std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
  }
  ~DecimalCommaLocale() {
    std::locale::global(saved_cpp);
    std::setlocale(LC_NUMERIC, saved_c.c_str());
  }
  DecimalCommaLocale(const DecimalCommaLocale&) = delete;
  DecimalCommaLocale& operator=(const DecimalCommaLocale&) = delete;

  // The C library's locale in force, or the empty text when only the C++ one has the comma.
  std::string c_name;

private:
  std::string saved_c;
  std::locale saved_cpp;
};

TEST_F(ValueText, NumbersCarryAPointInADecimalCommaLocale) {
  exec("INSERT INTO visualization (id, source, name_param) VALUES (5, 42, 'SKZ');"
       "INSERT INTO observed_param (name) VALUES ('SKZ');"
       "INSERT INTO control_point (id) VALUES (20)");
  DecimalCommaLocale comma;
  SCOPED_TRACE("C library locale: " + (comma.c_name.empty() ? "none" : comma.c_name));
  ASSERT_EQ(std::to_string(0.5), comma.c_name.empty() ? "0.500000" : "0,500000");

  // What the writes put into their statements.
  result_param p;
  p.name = "SKZ";
  p.value = 1234.5f;
  p.middle = 0.125f;
  p.visualization_id = 5;
  calc_result r;
  r.param_info_id = 11;
  r.receipt_date = "2023-7-4 9:5:1";
  r.source = 42;
  r.result_params = {p};
  store().writeResultBase("plant", r, false);
  store().writeResult("plant", r);
  store().writeLatestData(r);
  store().writeStatusControlPoint(2.75f, 3.5f, 20, "2023-7-4 9:5:1");
  store().writeResultTmp({{5, "2023-7-4 9:5:1", -2.5e-7}});
  EXPECT_EQ(scalar("SELECT value FROM result_base"), "1234.5");
  EXPECT_EQ(scalar("SELECT value FROM result"), "1234.5");
  EXPECT_EQ(scalar("SELECT status || ' ' || status_max FROM control_point"), "2.75 3.5");
  EXPECT_EQ(scalar("SELECT value FROM result_temp"), "-2.5e-07");

  // What the reads make of the server's points.
  std::vector<visualization> items;
  store().readVisualization(42, items);
  ASSERT_EQ(items.size(), 1u);
  EXPECT_EQ(items[0].latest_raw_value, 1234.5);
  EXPECT_EQ(items[0].latest_middle_value, 0.125);
  float status = 0.0f;
  store().readStatusElement(20, status);
  EXPECT_EQ(status, 2.75f);
  std::vector<std::vector<double>> table;
  store().readDataTable("SELECT 1234.5::float8, -2.5e-7::float8", table);
  ASSERT_EQ(table.size(), 1u);
  EXPECT_EQ(table[0], (std::vector<double>{1234.5, -2.5e-7}));
}

TEST_F(ValueText, WholeNumbersAndBooleansAreWhatTheColumnsTake) {
  const long source = 9007199254740993L; // beyond a double's exact range
  store().writeData("INSERT INTO module (id, source, hardware_status, multichannel, "
                    "data_in_utc_0) VALUES (" +
                    Probe::numberText(-5) + ", " + Probe::numberText(source) + ", " +
                    Probe::numberText(4294967295u) + ", " + Probe::boolText(true) + ", " +
                    Probe::boolText(false) + ")");
  EXPECT_EQ(scalar("SELECT source FROM module WHERE id = -5"), "9007199254740993");
  EXPECT_EQ(scalar("SELECT hardware_status FROM module WHERE id = -5"), "4294967295");
  EXPECT_EQ(scalar("SELECT multichannel FROM module WHERE id = -5"), "t");
  EXPECT_EQ(scalar("SELECT data_in_utc_0 FROM module WHERE id = -5"), "f");
}

TEST_F(ValueText, OptionalIdsBecomeNullAndMatchNull) {
  for (const long channel : {0L, 12L}) {
    store().writeData("INSERT INTO status_element (source, channel_id) VALUES (1, " +
                      Probe::optionalId(channel) + ")");
  }
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM status_element WHERE channel_id IS NULL"), "1");
  EXPECT_EQ(store().getValueInt("SELECT COUNT(*) FROM status_element WHERE CHANNEL_ID " +
                                Probe::optionalIdCondition(0)),
            1);
  EXPECT_EQ(store().getValueInt("SELECT channel_id FROM status_element WHERE CHANNEL_ID " +
                                Probe::optionalIdCondition(12)),
            12);
  EXPECT_EQ(store().getValueInt("SELECT COUNT(*) FROM status_element WHERE CHANNEL_ID " +
                                Probe::optionalIdCondition(13)),
            0);
}

TEST_F(ValueText, QuotedTextsRoundTripWhateverQuotesTheyHold) {
  // Without a quote the statement is the same as with plain quoting.
  EXPECT_EQ(Probe::quoted("plant-1 +3:00"), "'plant-1 +3:00'");

  const std::vector<std::string> aliases{
      "O'Brien pumps", "'",          "''", "a''b'", "", "x'); DROP TABLE module; --",
      "back\\slash'",  "цех №3 'Юг'"};
  for (const std::string& alias : aliases) {
    SCOPED_TRACE(alias);
    exec("DELETE FROM organization_object");
    store().writeData("INSERT INTO organization_object (alias_name, connection_status) VALUES (" +
                      Probe::quoted(alias) + ", 1)");
    EXPECT_EQ(store().getValueString("SELECT alias_name FROM organization_object"), alias);
    EXPECT_EQ(store().getValueInt("SELECT connection_status FROM organization_object WHERE "
                                  "alias_name = " +
                                  Probe::quoted(alias)),
              1);
  }
  EXPECT_EQ(scalar("SELECT to_regclass('module') IS NOT NULL"), "t");
}

TEST_F(ValueText, OptionalTextsBecomeNullAndMatchNull) {
  for (const std::string alias : {"", "O'Brien"}) {
    store().writeData("INSERT INTO notification (organization_alias, additional_info) VALUES (" +
                      Probe::optionalQuoted(alias) + ", " + Probe::optionalQuoted(alias) + ")");
  }
  EXPECT_EQ(scalar("SELECT COUNT(*) FROM notification WHERE organization_alias IS NULL AND "
                   "additional_info IS NULL"),
            "1");
  EXPECT_EQ(store().getValueInt("SELECT COUNT(*) FROM notification WHERE ORGANIZATION_ALIAS " +
                                Probe::optionalQuotedCondition("")),
            1);
  EXPECT_EQ(store().getValueString("SELECT additional_info FROM notification WHERE "
                                   "ORGANIZATION_ALIAS " +
                                   Probe::optionalQuotedCondition("O'Brien")),
            "O'Brien");
}

TEST_F(ValueText, FieldsReadByTheStreamAndAsText) {
  const pqxx::result rows =
      query("SELECT 42, NULL::integer, 'abc', 2.75::real, -1.5e-10::float8, 4294967295::bigint, "
            "'text', NULL::text, '', 9007199254740993::bigint");
  ASSERT_EQ(rows.size(), 1u);
  const auto row = rows[0];
  std::stringstream stream;

  int number = -1;
  Probe::readField(stream, row[0], number);
  EXPECT_EQ(number, 42);
  Probe::readField(stream, row[1], number);
  EXPECT_EQ(number, 42) << "a NULL leaves the target as it was";
  Probe::readField(stream, row[2], number);
  EXPECT_EQ(number, 0) << "a text that is no number gives 0";

  // Each reading rule on a stream of its own, as operations that read unrelated rows use.
  std::stringstream fresh;
  float real = 0.0f;
  Probe::readField(fresh, row[3], real);
  EXPECT_EQ(real, 2.75f);
  double precise = 0.0;
  Probe::readField(fresh, row[4], precise);
  EXPECT_EQ(precise, -1.5e-10);
  unsigned int config = 0;
  Probe::readField(fresh, row[5], config);
  EXPECT_EQ(config, 4294967295u);
  long source = 0;
  Probe::readField(fresh, row[9], source);
  EXPECT_EQ(source, 9007199254740993L);

  EXPECT_EQ(Probe::textField(row[6]), "text");
  EXPECT_EQ(Probe::textField(row[7]), "");
  EXPECT_EQ(Probe::textField(row[8]), "");
}

} // namespace
