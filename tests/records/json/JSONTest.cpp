#include "records/json/JSON.h"

#include <gtest/gtest.h>
#include <sstream>

// Numbers as settings were always read ("text=bits"): integer digits as v * 10 + d, decimals as
// d * 0.1 + d * 0.01 + ... (each factor the previous times 0.1), one multiplication or division by
// ten per exponent unit until the value settles, the sign last. Documents print back compact,
// keys in order, the later of a repeated key winning; the texts after them are refused.
TEST(JSON, ReadsSettingsAsTheyWereAlwaysReadAndPrintsThemBack) {
  std::wistringstream table(
      LR"(-0=-0x0p+0 0.3e1=0x1.8000000000001p+1 0.123456789=0x1.f9add3739636p-4
12345678901234567890=0x1.56a95319d63e2p+63 1.5E+2=0x1.2cp+7 1e-6=0x1.0c6f7a0b5ed8ep-20 1e309=inf
1.7e308=0x1.e42d130773b6dp+1023 1e-323=0x0.0000000000002p-1022 1e-324=0x0p+0
-2e99999999999999999999=-inf 2e-99999999999999999999=0x0p+0 0e99999999999999999999=0x0p+0)");
  for (std::wstring c; table >> c;) {
    const auto parsed = JSON::Parse(c.substr(0, c.find(L'=')).c_str());
    std::wostringstream bits;
    bits << std::hexfloat << (parsed && parsed->IsNumber() ? parsed->AsNumber() : 0.5);
    EXPECT_EQ(bits.str(), c.substr(c.find(L'=') + 1));
  }
  std::wistringstream documents(LR"([True,FALSE,Null,tRuE]|[true,false,null,true]
{ "b" : [ 1 , "x y" , [ ] , { } ] , "a":{"k":null}, "c": -2 }|{"a":{"k":null},"b":[1,"x y",[],{}],"c":-2}
{"k": 1, "k": [2]}|{"k":[2]}
"a\"b\\c\/d\b\f\n\r\t\u00e9\u041F\uD83D\uDE00\uABcd\u007f\u0001"|"a\"b\\c\/d\b\f\n\r\t\u00E9\u041F\uD83D\uDE00\uABCD\u007F\u0001"
[0.30000000000000004, 150, -0, 0.3333333333333333, 123456789012345, 1234567890123456]|[0.3,150,-0,0.333333333333333,123456789012345,1.23456789012346e+15]
[0.0001, 0.00001, 1e999, -1e999]|[0.0001,1e-05,null,null])");
  for (std::wstring c; std::getline(documents, c);) {
    EXPECT_EQ(JSON::Stringify(JSON::Parse(c.substr(0, c.find(L'|')).c_str()).get()),
              c.substr(c.find(L'|') + 1));
  }
  const std::wstring refused[] = {
      L"01", L"-01", L"1.", L".5", L"-", L"+1", L"1e", L"1e+", L"1.e5", L"[01]", L"[1.]", L"0x10",
      L"--1", L"{\"gain\": 007}", L"", L" \t\r\n", L"1 2", L"[1] x", L"tru", L"nulll", L"fals",
      L"[", L"[1", L"[1,", L"[1,]", L"[,1]", L"[1 2]", L"[1;2]", L"]", L"{", L"{\"a\"", L"{\"a\":",
      L"{\"a\" 1}", L"{\"a\":1,}", L"{a:1}", L"{\"a\":1", L"{\"a\":1 \"b\":2}", L"[\"a\" : 1]",
      L"}", L"[[]", L"\"a\nb\"", L"\"\\x41\"", L"\"\\u12\"", L"\"\\u12g4\"", L"\"\\", L"\"\\u",
      // An open string, a control character and a widened byte of 0x80 or above in a string.
      L"\"open", std::wstring(L"\"") + wchar_t(31) + L"\"",
      std::wstring(L"\"a") + wchar_t(-48) + L"\""};
  for (const std::wstring& text : refused)
    EXPECT_EQ(JSON::Parse(text.c_str()), nullptr) << std::string(text.begin(), text.end());
  // the narrow form widens and reads the same; a null text reads as nothing in either form
  EXPECT_TRUE(JSON::Parse("[1, {\"a\": 2}]") && !JSON::Parse(static_cast<const char*>(nullptr)) &&
              JSON::Parse("[1, {\"a\": 2}]")->Stringify() == L"[1,{\"a\":2}]");
  // Whitespace around the value, a raw tab in a string; the text ends at its first NUL.
  EXPECT_EQ(JSON::Stringify(JSON::Parse(L" \r\n\t[1, \"a\tb\\u0000c\"]\n\n").get()) +
                JSON::Stringify(JSON::Parse(L"[1]\0garbage").get()) + JSON::Stringify(nullptr),
            L"[1,\"a\\tb\\u0000c\"][1]");
  // Nested 512 arrays and objects deep at most; far beyond, refused without a stack overflow.
  const auto read = [](std::size_t arrays, const wchar_t* inner) {
    return JSON::Parse((std::wstring(arrays, L'[') + inner + std::wstring(arrays, L']')).c_str()) !=
           nullptr;
  };
  EXPECT_EQ(std::vector<bool>({read(512, L""), read(510, L"{\"k\":[]}"), read(513, L""),
                               read(511, L"{\"k\":[]}"), read(1000000, L"")}),
            std::vector<bool>({true, true, false, false, false}));
  // Each value: type|string|bool|number|elements|members|children|has child 0, "12"|child 0,
  // "12"|keys. Copies and moves keep the whole tree; the pretty layout reads back.
  std::wostringstream out;
  for (const JSONValue& v :
       {JSONValue(), JSONValue(static_cast<const wchar_t*>(nullptr)), JSONValue(L"12"),
        JSONValue(true), JSONValue(7), *JSON::Parse(L"[1]"), *JSON::Parse(L"{\"12\":1,\"a\":2}")})
    out << static_cast<int>(v.Type()) << L"|" << v.AsString() << L"|" << v.AsBool() << L"|"
        << v.AsNumber() << L"|" << v.AsArray().size() << L"|" << v.AsObject().size() << L"|"
        << v.CountChildren() << L"|" << v.HasChild(0) << v.HasChild(L"12") << L"|"
        << (v.Child(0) != nullptr) << (v.Child(L"12") != nullptr) << L"|" << v.ObjectKeys().size()
        << L" ";
  EXPECT_EQ(out.str(), L"0||0|nan|0|0|0|00|00|0 1||0|nan|0|0|0|00|00|0 1|12|0|nan|0|0|0|00|00|0 "
                       L"2||1|nan|0|0|0|00|00|0 3||0|7|0|0|0|00|00|0 4||0|nan|1|0|1|10|10|0 "
                       L"5||0|nan|0|2|2|01|01|2 ");
  JSONValue copy(*JSON::Parse(L"{\"a\":[1,[2,\"x\"]],\"b\":{\"c\":null},\"f\":false}")), target;
  target = copy;
  const std::wstring pretty = target.Stringify(true);
  EXPECT_EQ(pretty + JSON::Parse(pretty.c_str())->Stringify() +
                JSONValue(JSONArray{}).Stringify(true),
            L"{\n  \"a\":[\n    1,[\n      2,\"x\"\n    ]\n  ],\"b\":{\n    \"c\":null\n  },\"f\":"
            L"false\n}{\"a\":[1,[2,\"x\"]],\"b\":{\"c\":null},\"f\":false}[\n  \n]");
}
