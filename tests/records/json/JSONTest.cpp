// The JSON reader and printer of the settings documents.
#include "records/json/JSON.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <sstream>
#include <string>
#include <utility>

namespace {

const double kInf = std::numeric_limits<double>::infinity();

// Numbers are read as settings always were: integer digits as v * 10 + d, decimals as the sum
// of d * 0.1, d * 0.01, ... (each factor the previous one times 0.1), then one multiplication or
// division by ten per unit of the exponent, stopping once the value is settled, and the sign
// last. Several differ in the last bit from a correctly rounded conversion on purpose.
TEST(JSONNumbers, ExponentMultipliesOrDividesOncePerUnit) {
  const std::pair<const wchar_t*, double> cases[] = {
      {L"0.3", 0x1.3333333333334p-2},
      {L"2.675", 0x1.5666666666667p+1},
      {L"0.123456789", 0x1.f9add37396360p-4},
      {L"12345678901234567890", 0x1.56a95319d63e2p+63},
      {L"1.5E+2", 150.0},
      {L"25e-1", 2.5},
      {L"1e05", 100000.0},
      {L"1e-6", 0x1.0c6f7a0b5ed8ep-20},
      {L"0.3e1", 0x1.8000000000001p+1},
      {L"1.7e308", 0x1.e42d130773b6dp+1023},
      {L"1e309", kInf},
      {L"1e-323", 0x0.0000000000002p-1022},
      {L"1e-324", 0.0},
      {L"-2e99999999999999999999", -kInf},
      {L"2e-99999999999999999999", 0.0},
      {L"0e99999999999999999999", 0.0},
      {L"-0.3", -0x1.3333333333334p-2},
      {L"-0", -0.0}};
  for (const auto& [text, value] : cases) {
    const auto parsed = JSON::Parse(text);
    ASSERT_TRUE(parsed && parsed->IsNumber()) << text;
    EXPECT_EQ(parsed->AsNumber(), value) << text;
    EXPECT_EQ(std::signbit(parsed->AsNumber()), std::signbit(value)) << text;
  }
}

TEST(JSONParse, MalformedTextsFail) {
  const std::wstring texts[] = {
      L"01", L"-01", L"1.", L".5", L"-", L"-.5", L"+1", L"1e", L"1e+", L"1.e5", L"[01]", L"[1.]",
      L"0x10", L"1.5.2", L"- 1", L"--1", L"{\"gain\": 007}", L"", L" \t\r\n", L"1 2", L"{} {}",
      L"[1] x", L"tru", L"nul", L"fals", L"truex", L"nulll", L"t", L"yes", L"[", L"[1", L"[1,",
      L"[1,]", L"[,1]", L"[1 2]", L"[1;2]", L"]", L"{", L"{\"a\"", L"{\"a\":", L"{\"a\" 1}",
      L"{\"a\":1,}", L"{a:1}", L"{'a':1}", L"{\"a\":1", L"{,}", L"{\"a\":1 \"b\":2}", L"{1:2}",
      L"[\"a\" : 1]", L"}", L"[]]", L"[[]", L"\"a\nb\"", L"\"a\rb\"", L"\"\\x41\"", L"\"\\u12\"",
      L"\"\\u12g4\"", L"\"\\", L"\"\\u", L"\"open", L"\"\\a\"", L"\"\\U0041\"",
      // A control character, and a widened byte of 0x80 or above, inside a string.
      std::wstring(L"\"") + wchar_t(31) + L"\"", std::wstring(L"\"a") + wchar_t(-48) + L"\""};
  for (const std::wstring& text : texts) {
    EXPECT_EQ(JSON::Parse(text.c_str()), nullptr) << std::string(text.begin(), text.end());
  }
  EXPECT_EQ(JSON::Parse(static_cast<const wchar_t*>(nullptr)), nullptr);
  // Nested deeper than 512 arrays and objects; far beyond the bound, refused without a stack
  // overflow.
  const auto nested = [](std::size_t levels, const std::wstring& open, const wchar_t* inner) {
    std::wstring text;
    for (std::size_t i = 0; i < levels; ++i) {
      text += open;
    }
    return JSON::Parse(
        (text + inner + std::wstring(levels, open[0] == L'[' ? L']' : L'}')).c_str());
  };
  EXPECT_TRUE(nested(512, L"[", L"") && nested(511, L"{\"k\":", L"[]"));
  EXPECT_FALSE(nested(513, L"[", L"") || nested(512, L"{\"k\":", L"[]") ||
               nested(1000000, L"[", L""));
}

TEST(JSONParse, DocumentsPrintBackCompactInKeyOrder) {
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L" \r\n\t[1, 2]\n\n", L"[1,2]"},
      {L"[1]\0garbage", L"[1]"}, // the text ends at its first NUL
      {L"[True,FALSE,Null,tRuE]", L"[true,false,null,true]"},
      {L"{ \"b\" : [ 1 , \"x\" , [ ] , { } ] , \"a\":{\"k\":null}, \"c\": -2 }",
       L"{\"a\":{\"k\":null},\"b\":[1,\"x\",[],{}],\"c\":-2}"},
      {L"{\"k\": 1, \"k\": [2]}", L"{\"k\":[2]}"},
      // Each \u escape is one wide character: surrogates are not joined.
      {L"\"a\\\"b\\\\c\\/d\\b\\f\\n\\r\\t\\u00e9\\u041F\\uD83D\\uDE00\\uABcd\"",
       L"\"a\\\"b\\\\c\\/d\\b\\f\\n\\r\\t\\u00E9\\u041F\\uD83D\\uDE00\\uABCD\""},
      {L"\"a\tb\\u0000c\"", L"\"a\\tb\\u0000c\""},
      // Fifteen significant digits; no number for the infinities.
      {L"[0.30000000000000004, 150, -0, 0.3333333333333333, 123456789012345, 1234567890123456, "
       L"0.0001, 0.00001, 1e999, -1e999]",
       L"[0.3,150,-0,0.333333333333333,123456789012345,1.23456789012346e+15,0.0001,1e-05,null,"
       L"null]"}};
  for (const auto& [text, printed] : cases) {
    EXPECT_EQ(JSON::Stringify(JSON::Parse(text).get()), printed) << printed;
  }
  const wchar_t* cursor = L"a\\\"b\\u00e9\"rest";
  std::wstring text;
  ASSERT_TRUE(JSON::ExtractString(&cursor, text));
  EXPECT_EQ(text + L"|" + cursor + JSON::Stringify(nullptr), L"a\"b\u00e9|rest");
  // Narrow text converts under the C locale, where only ASCII does.
  ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
  EXPECT_EQ(JSON::Stringify(JSON::Parse("{\"a\": [1.5, \"x\"]}").get()), L"{\"a\":[1.5,\"x\"]}");
  EXPECT_FALSE(JSON::Parse("1 2") || JSON::Parse("\"\xd0\x9f\"") ||
               JSON::Parse(static_cast<const char*>(nullptr)));
}

// type|string|bool|number|elements|members|children|has child 0 and "12"|child 0 and "12"|keys
std::wstring accessors(const JSONValue& v) {
  std::wostringstream out;
  out << static_cast<int>(v.Type()) << L"|" << v.AsString() << L"|" << v.AsBool() << L"|"
      << v.AsNumber() << L"|" << v.AsArray().size() << L"|" << v.AsObject().size() << L"|"
      << v.CountChildren() << L"|" << v.HasChild(0) << v.HasChild(L"12") << L"|"
      << (v.Child(0) != nullptr) << (v.Child(L"12") != nullptr) << L"|" << v.ObjectKeys().size();
  return out.str();
}

TEST(JSONValue, AccessorsOfAnotherTypeReadAsEmpty) {
  EXPECT_EQ(accessors(JSONValue()) + accessors(JSONValue(static_cast<const wchar_t*>(nullptr))),
            L"0||0|nan|0|0|0|00|00|01||0|nan|0|0|0|00|00|0");
  EXPECT_EQ(accessors(JSONValue(L"12")) + accessors(JSONValue(std::wstring(L"x"))),
            L"1|12|0|nan|0|0|0|00|00|01|x|0|nan|0|0|0|00|00|0");
  EXPECT_EQ(accessors(JSONValue(true)) + accessors(JSONValue(2.5)) + accessors(JSONValue(7)),
            L"2||1|nan|0|0|0|00|00|03||0|2.5|0|0|0|00|00|03||0|7|0|0|0|00|00|0");
  EXPECT_EQ(accessors(*JSON::Parse(L"[1]")) + accessors(*JSON::Parse(L"{\"12\":1,\"a\":2}")),
            L"4||0|nan|1|0|1|10|10|05||0|nan|0|2|2|01|01|2");
  const auto list = JSON::Parse(L"[10, 20]");
  EXPECT_EQ(list->Child(1)->AsNumber() + list->HasChild(1) + list->HasChild(2), 21.0);
  EXPECT_TRUE(list->Child(2) == nullptr && list->Child(static_cast<std::size_t>(-1)) == nullptr);
  EXPECT_EQ(JSON::Parse(L"{\"b\":1,\"a\":2,\"list\":3}")->ObjectKeys(),
            (std::vector<std::wstring>{L"a", L"b", L"list"}));
}

TEST(JSONValue, CopiesAreDeepAndPrintedTextParsesBack) {
  const auto original = JSON::Parse(L"{\"list\":[1,\"a\",[{}]],\"flag\":false,\"n\":null}");
  JSONValue copy(*original), assigned;
  EXPECT_NE(copy.Child(L"list")->Child(0), original->Child(L"list")->Child(0));
  assigned = copy;
  copy = JSONValue(3.0);
  JSONValue moved(std::move(assigned)), target;
  target = std::move(moved);
  EXPECT_EQ(target.Stringify() + copy.Stringify(), original->Stringify() + L"3");
  std::wstring text = L"q\"b\\s/ \b\f\n\r\t~";
  text += {wchar_t(0x7F), wchar_t(1), wchar_t(0xE9), wchar_t(0x1F600), wchar_t(-48), L'\0'};
  EXPECT_EQ(JSONValue(text).Stringify() + JSONValue(std::nan("")).Stringify(),
            L"\"q\\\"b\\\\s\\/ \\b\\f\\n\\r\\t~\\u007F\\u0001\\u00E9\\uF600\\uFFD0\\u0000\"null");
  const auto nested = JSON::Parse(L"{\"a\":[1,[2,3]],\"b\":{\"c\":null}}");
  const std::wstring pretty = nested->Stringify(true);
  EXPECT_EQ(pretty,
            L"{\n  \"a\":[\n    1,[\n      2,3\n    ]\n  ],\"b\":{\n    \"c\":null\n  }\n}");
  EXPECT_EQ(JSON::Parse(pretty.c_str())->Stringify() + JSONValue(JSONArray{}).Stringify(true),
            nested->Stringify() + L"[\n  \n]");
}

} // namespace
