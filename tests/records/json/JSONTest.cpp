// The JSON reader and printer of the settings documents.
#include "records/json/JSON.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <sstream>

namespace {

// Numbers are read as settings always were: integer digits as v * 10 + d, decimals as the sum
// of d * 0.1, d * 0.01, ... (each factor the previous one times 0.1), then one multiplication or
// division by ten per unit of the exponent, stopping once the value is settled, and the sign
// last. Several differ in the last bit from a correctly rounded conversion on purpose. Each
// case is "text=bits".
TEST(JSONNumbers, ExponentMultipliesOrDividesOncePerUnit) {
  std::wistringstream table(LR"(-0.3=-0x1.3333333333334p-2 -0=-0x0p+0 0.3e1=0x1.8000000000001p+1
2.675=0x1.5666666666667p+1 0.123456789=0x1.f9add3739636p-4 1e05=0x1.86ap+16 25e-1=0x1.4p+1
12345678901234567890=0x1.56a95319d63e2p+63 1.5E+2=0x1.2cp+7 1e-6=0x1.0c6f7a0b5ed8ep-20
1.7e308=0x1.e42d130773b6dp+1023 1e309=inf 1e-324=0x0p+0 1e-323=0x0.0000000000002p-1022
-2e99999999999999999999=-inf 2e-99999999999999999999=0x0p+0 0e99999999999999999999=0x0p+0)");
  for (std::wstring c; table >> c;) {
    const auto parsed = JSON::Parse(c.substr(0, c.find(L'=')).c_str());
    std::wostringstream bits;
    bits << std::hexfloat << (parsed && parsed->IsNumber() ? parsed->AsNumber() : 0.5);
    EXPECT_EQ(bits.str(), c.substr(c.find(L'=') + 1));
  }
}

// Documents print back compact, members in key order, the later of a repeated key; "- ..."
// lists texts that are refused.
TEST(JSONParse, MalformedTextsFail) {
  std::wistringstream table(LR"([True,FALSE,Null,tRuE] => [true,false,null,true]
{ "b" : [ 1 , "x" , [ ] , { } ] , "a":{"k":null}, "c": -2 } => {"a":{"k":null},"b":[1,"x",[],{}],"c":-2}
{"k": 1, "k": [2]} => {"k":[2]}
"a\"b\\c\/d\b\f\n\r\t\u00e9\u041F\uD83D\uDE00\uABcd" => "a\"b\\c\/d\b\f\n\r\t\u00E9\u041F\uD83D\uDE00\uABCD"
[0.30000000000000004, 150, -0, 0.3333333333333333, 123456789012345, 1234567890123456] => [0.3,150,-0,0.333333333333333,123456789012345,1.23456789012346e+15]
[0.0001, 0.00001, 1e999, -1e999] => [0.0001,1e-05,null,null])");
  for (std::wstring c; std::getline(table, c);) {
    const std::size_t arrow = c.find(L" => ");
    EXPECT_EQ(JSON::Stringify(JSON::Parse(c.substr(0, arrow).c_str()).get()), c.substr(arrow + 4));
  }
  const std::wstring refused[] = {
      L"01", L"-01", L"1.", L".5", L"-", L"-.5", L"+1", L"1e", L"1e+", L"1.e5", L"[01]", L"[1.]",
      L"0x10", L"1.5.2", L"- 1", L"--1", L"{\"gain\": 007}", L"", L" \t\r\n", L"1 2", L"{} {}",
      L"[1] x", L"tru", L"nul", L"fals", L"truex", L"nulll", L"t", L"yes", L"[", L"[1", L"[1,",
      L"[1,]", L"[,1]", L"[1 2]", L"[1;2]", L"]", L"{", L"{\"a\"", L"{\"a\":", L"{\"a\" 1}",
      L"{\"a\":1,}", L"{a:1}", L"{'a':1}", L"{\"a\":1", L"{,}", L"{\"a\":1 \"b\":2}", L"{1:2}",
      L"[\"a\" : 1]", L"}", L"[]]", L"[[]", L"\"a\nb\"", L"\"a\rb\"", L"\"\\x41\"", L"\"\\u12\"",
      L"\"\\u12g4\"", L"\"\\", L"\"\\u", L"\"open", L"\"\\a\"", L"\"\\U0041\"",
      // A control character, and a widened byte of 0x80 or above, inside a string.
      std::wstring(L"\"") + wchar_t(31) + L"\"", std::wstring(L"\"a") + wchar_t(-48) + L"\""};
  for (const std::wstring& text : refused)
    EXPECT_EQ(JSON::Parse(text.c_str()), nullptr) << std::string(text.begin(), text.end());
  // Whitespace around the value, a raw tab in a string; the text ends at its first NUL.
  EXPECT_EQ(JSON::Stringify(JSON::Parse(L" \r\n\t[1, \"a\tb\\u0000c\"]\n\n").get()) +
                JSON::Stringify(JSON::Parse(L"[1]\0garbage").get()) + JSON::Stringify(nullptr),
            L"[1,\"a\\tb\\u0000c\"][1]");
  // Nested 512 arrays and objects deep at most; far beyond, refused without a stack overflow.
  const auto nested = [](std::size_t arrays, const wchar_t* inner) {
    return JSON::Parse((std::wstring(arrays, L'[') + inner + std::wstring(arrays, L']')).c_str()) !=
           nullptr;
  };
  EXPECT_EQ(std::to_string(nested(512, L"")) + std::to_string(nested(510, L"{\"k\":[]}")) +
                std::to_string(nested(513, L"")) + std::to_string(nested(511, L"{\"k\":[]}")) +
                std::to_string(nested(1000000, L"")),
            "11000");
  EXPECT_EQ(JSON::Parse(static_cast<const wchar_t*>(nullptr)), nullptr);
  // Narrow text converts under the C locale, where only ASCII does.
  ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
  EXPECT_EQ(JSON::Stringify(JSON::Parse("{\"a\": [1.5, \"x\"]}").get()), L"{\"a\":[1.5,\"x\"]}");
  EXPECT_FALSE(JSON::Parse("1 2") || JSON::Parse("\"\xd0\x9f\"") ||
               JSON::Parse(static_cast<const char*>(nullptr)));
}

// Each value: type|string|bool|number|elements|members|children|has child 0 and "12"|child 0
// and "12"|keys.
TEST(JSONValue, AccessorsOfAnotherTypeReadAsEmpty) {
  std::wostringstream out;
  for (const JSONValue& v :
       {JSONValue(), JSONValue(static_cast<const wchar_t*>(nullptr)), JSONValue(L"12"),
        JSONValue(std::wstring(L"x")), JSONValue(true), JSONValue(2.5), JSONValue(7),
        *JSON::Parse(L"[1]"), *JSON::Parse(L"{\"12\":1,\"a\":2}")})
    out << static_cast<int>(v.Type()) << L"|" << v.AsString() << L"|" << v.AsBool() << L"|"
        << v.AsNumber() << L"|" << v.AsArray().size() << L"|" << v.AsObject().size() << L"|"
        << v.CountChildren() << L"|" << v.HasChild(0) << v.HasChild(L"12") << L"|"
        << (v.Child(0) != nullptr) << (v.Child(L"12") != nullptr) << L"|" << v.ObjectKeys().size()
        << L" ";
  const auto list = JSON::Parse(L"[10, 20]");
  out << list->Child(1)->AsNumber() << list->HasChild(1) << list->HasChild(2)
      << (list->Child(2) == nullptr) << (list->Child(static_cast<std::size_t>(-1)) == nullptr);
  for (const std::wstring& key : JSON::Parse(L"{\"b\":1,\"a\":2,\"list\":3}")->ObjectKeys())
    out << L" " << key;
  EXPECT_EQ(out.str(), L"0||0|nan|0|0|0|00|00|0 1||0|nan|0|0|0|00|00|0 1|12|0|nan|0|0|0|00|00|0 "
                       L"1|x|0|nan|0|0|0|00|00|0 2||1|nan|0|0|0|00|00|0 3||0|2.5|0|0|0|00|00|0 "
                       L"3||0|7|0|0|0|00|00|0 4||0|nan|1|0|1|10|10|0 5||0|nan|0|2|2|01|01|2 "
                       L"201011 a b list");
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
  EXPECT_EQ(pretty + JSON::Parse(pretty.c_str())->Stringify() +
                JSONValue(JSONArray{}).Stringify(true),
            L"{\n  \"a\":[\n    1,[\n      2,3\n    ]\n  ],\"b\":{\n    \"c\":null\n  }\n}" +
                nested->Stringify() + L"[\n  \n]");
}

} // namespace
