#include "records/json/JSON.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <string>

namespace {

// The parsed number of a document that must be a Number.
double number(const wchar_t* text) {
  const auto value = JSON::Parse(text);
  if (!value || !value->IsNumber()) {
    ADD_FAILURE() << "not a number";
    return std::numeric_limits<double>::quiet_NaN();
  }
  return value->AsNumber();
}

// Expected values below are worked step by step in double arithmetic, the way the settings
// were always read: integer digits as v * 10 + d, decimals as the sum of d * 0.1, d * 0.01,
// ... (each factor the previous times 0.1), then one * 10 or / 10 per unit of the exponent.
// Several differ in the last bit from a correctly rounded conversion on purpose.
TEST(JSONNumbers, DecimalsAreSummedDigitByDigit) {
  // 3 * 0.1 rounds up: 0.30000000000000004, where strtod gives 0.29999999999999999.
  EXPECT_EQ(number(L"0.3"), 0x1.3333333333334p-2);
  EXPECT_EQ(number(L"0.7"), 0x1.6666666666667p-1);
  // 2 + (0.6 + 7 * 0.010000000000000002 + 5 * 0.0010000000000000002)
  EXPECT_EQ(number(L"2.675"), 0x1.5666666666667p+1);
  EXPECT_EQ(number(L"0.123456789"), 0x1.f9add37396360p-4);
  // Where the sum happens to round as strtod does.
  EXPECT_EQ(number(L"1.5"), 1.5);
  EXPECT_EQ(number(L"9.81"), 9.81);
  EXPECT_EQ(number(L"3.14159265"), 3.14159265);
  EXPECT_EQ(number(L"1.23"), 1.23);
  EXPECT_EQ(number(L"0.1"), 0.1);
  EXPECT_EQ(number(L"42"), 42.0);
  // Integer digits in double: beyond 2^53 the running v * 10 + d rounds at each step.
  EXPECT_EQ(number(L"12345678901234567890"), 0x1.56a95319d63e2p+63);
}

TEST(JSONNumbers, ExponentMultipliesOrDividesOncePerUnit) {
  EXPECT_EQ(number(L"1.5e2"), 150.0);
  EXPECT_EQ(number(L"1.5E+2"), 150.0);
  EXPECT_EQ(number(L"25e-1"), 2.5);
  EXPECT_EQ(number(L"1e05"), 100000.0);
  // 1 / 10 / 10 / 10 / 10 / 10 / 10 = 1.0000000000000002e-06, not the closest double to 1e-6.
  EXPECT_EQ(number(L"1e-6"), 0x1.0c6f7a0b5ed8ep-20);
  EXPECT_EQ(number(L"1e25"), 0x1.08b2a2c280290p+83);
  // 3 * 0.1 is already above 0.3, times 10 stays above 3.
  EXPECT_EQ(number(L"0.3e1"), 0x1.8000000000001p+1);
  // 1.7 times ten 308 times stays finite; one more decade overflows.
  EXPECT_TRUE(std::isfinite(number(L"1.7e308")));
  EXPECT_EQ(number(L"1e309"), std::numeric_limits<double>::infinity());
  // Dividing walks down through the subnormals to zero.
  EXPECT_EQ(number(L"1e-323"), 0x0.0000000000002p-1022);
  EXPECT_EQ(number(L"1e-324"), 0.0);
  // Huge exponents settle at infinity or zero without looping for each unit.
  EXPECT_EQ(number(L"2e99999999999999999999"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(number(L"-2e99999999999999999999"), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(number(L"2e-99999999999999999999"), 0.0);
  EXPECT_EQ(number(L"0e99999999999999999999"), 0.0);
}

TEST(JSONNumbers, SignIsAppliedLast) {
  EXPECT_EQ(number(L"-0.3"), -0x1.3333333333334p-2);
  EXPECT_EQ(number(L"-1.5e2"), -150.0);
  const double negative_zero = number(L"-0");
  EXPECT_EQ(negative_zero, 0.0);
  EXPECT_TRUE(std::signbit(negative_zero));
  EXPECT_TRUE(std::signbit(number(L"-1e-400")));
}

TEST(JSONNumbers, MalformedNumbersFail) {
  for (const wchar_t* text : {L"01", L"-01", L"1.", L".5", L"-", L"-.5", L"+1", L"1e", L"1e+",
                              L"1.e5", L"[01]", L"[1.]", L"0x10", L"1.5.2", L"- 1", L"--1"}) {
    SCOPED_TRACE(std::wstring(text).size());
    EXPECT_EQ(JSON::Parse(text), nullptr) << "accepted";
  }
  // The leading zero ends the number, so inside an object the next digit is a stray.
  EXPECT_EQ(JSON::Parse(L"{\"gain\": 007}"), nullptr);
}

TEST(JSONParse, WholeTextMustBeOneValue) {
  EXPECT_EQ(JSON::Parse(L""), nullptr);
  EXPECT_EQ(JSON::Parse(L" \t\r\n"), nullptr);
  EXPECT_EQ(JSON::Parse(L"1 2"), nullptr);
  EXPECT_EQ(JSON::Parse(L"{} {}"), nullptr);
  EXPECT_EQ(JSON::Parse(L"[1] x"), nullptr);
  EXPECT_EQ(JSON::Parse(static_cast<const wchar_t*>(nullptr)), nullptr);
  EXPECT_EQ(JSON::Parse(static_cast<const char*>(nullptr)), nullptr);
  auto padded = JSON::Parse(L" \r\n\t[1, 2]\n\n");
  ASSERT_NE(padded, nullptr);
  EXPECT_EQ(padded->CountChildren(), 2u);
  // Text after a NUL is not seen.
  const wchar_t with_nul[] = L"[1]\0garbage";
  EXPECT_NE(JSON::Parse(with_nul), nullptr);
}

TEST(JSONParse, WordsInAnyCase) {
  for (const wchar_t* text : {L"true", L"TRUE", L"True", L"tRuE"}) {
    auto value = JSON::Parse(text);
    ASSERT_NE(value, nullptr);
    EXPECT_TRUE(value->IsBool());
    EXPECT_TRUE(value->AsBool());
  }
  auto no = JSON::Parse(L"FaLsE");
  ASSERT_NE(no, nullptr);
  EXPECT_TRUE(no->IsBool());
  EXPECT_FALSE(no->AsBool());
  auto none = JSON::Parse(L"NULL");
  ASSERT_NE(none, nullptr);
  EXPECT_TRUE(none->IsNull());
  for (const wchar_t* text : {L"tru", L"nul", L"fals", L"truex", L"nulll", L"t", L"yes"}) {
    EXPECT_EQ(JSON::Parse(text), nullptr);
  }
  auto list = JSON::Parse(L"[True,FALSE,Null]");
  ASSERT_NE(list, nullptr);
  EXPECT_TRUE(list->Child(size_t{0})->AsBool());
  EXPECT_TRUE(list->Child(2)->IsNull());
}

TEST(JSONParse, ArraysAndObjects) {
  auto root = JSON::Parse(L"{ \"b\" : [ 1 , \"x\" , [ ] , { } ] , \"a\":{\"k\":null}, \"c\": -2 }");
  ASSERT_NE(root, nullptr);
  ASSERT_TRUE(root->IsObject());
  EXPECT_EQ(root->ObjectKeys(), (std::vector<std::wstring>{L"a", L"b", L"c"}));
  const JSONValue* b = root->Child(L"b");
  ASSERT_NE(b, nullptr);
  ASSERT_TRUE(b->IsArray());
  EXPECT_EQ(b->CountChildren(), 4u);
  EXPECT_EQ(b->Child(size_t{0})->AsNumber(), 1.0);
  EXPECT_EQ(b->Child(1)->AsString(), L"x");
  EXPECT_TRUE(b->Child(2)->IsArray());
  EXPECT_EQ(b->Child(2)->CountChildren(), 0u);
  EXPECT_TRUE(b->Child(3)->IsObject());
  EXPECT_TRUE(root->Child(L"a")->Child(L"k")->IsNull());
  EXPECT_EQ(root->Child(L"c")->AsNumber(), -2.0);

  // A repeated key keeps the later value.
  auto repeated = JSON::Parse(L"{\"k\": 1, \"k\": [2]}");
  ASSERT_NE(repeated, nullptr);
  EXPECT_EQ(repeated->CountChildren(), 1u);
  EXPECT_TRUE(repeated->Child(L"k")->IsArray());
}

TEST(JSONParse, MalformedContainersFail) {
  for (const wchar_t* text :
       {L"[",          L"[1",          L"[1,",     L"[1,]",     L"[,1]",    L"[1 2]",
        L"[1;2]",      L"]",           L"{",       L"{\"a\"",   L"{\"a\":", L"{\"a\" 1}",
        L"{\"a\":1,}", L"{a:1}",       L"{'a':1}", L"{\"a\":1", L"{,}",     L"{\"a\":1 \"b\":2}",
        L"{1:2}",      L"[\"a\" : 1]", L"}",       L"[]]",      L"[[]"}) {
    SCOPED_TRACE(std::string(text, text + std::wstring(text).size()));
    EXPECT_EQ(JSON::Parse(text), nullptr);
  }
}

TEST(JSONParse, NestingDeeperThan512LevelsFails) {
  auto nested = [](std::size_t levels, wchar_t open, wchar_t close, const std::wstring& inner) {
    std::wstring text;
    for (std::size_t i = 0; i < levels; ++i) {
      text += open;
      if (open == L'{') {
        text += L"\"k\":";
      }
    }
    text += inner;
    return text + std::wstring(levels, close);
  };
  EXPECT_NE(JSON::Parse(nested(512, L'[', L']', L"").c_str()), nullptr);
  EXPECT_EQ(JSON::Parse(nested(513, L'[', L']', L"").c_str()), nullptr);
  EXPECT_NE(JSON::Parse(nested(511, L'{', L'}', L"[]").c_str()), nullptr);
  EXPECT_EQ(JSON::Parse(nested(512, L'{', L'}', L"[]").c_str()), nullptr);
  // Far beyond the bound: refused, not a stack overflow.
  EXPECT_EQ(JSON::Parse(std::wstring(1000000, L'[').c_str()), nullptr);
}

TEST(JSONStrings, EscapesAndRawCharacters) {
  std::wstring text;
  const wchar_t* cursor = L"a\\\"b\\\\c\\/d\\b\\f\\n\\r\\t\\u00e9\\u041F\\uD83D\\uDE00\"rest";
  ASSERT_TRUE(JSON::ExtractString(&cursor, text));
  EXPECT_EQ(text, std::wstring(L"a\"b\\c/d\b\f\n\r\t") + wchar_t(0xE9) + wchar_t(0x41F) +
                      wchar_t(0xD83D) + wchar_t(0xDE00));
  EXPECT_EQ(std::wstring(cursor), L"rest");

  // A raw tab is accepted; \u0000 gives a NUL inside the string.
  auto tab = JSON::Parse(L"\"a\tb\\u0000c\"");
  ASSERT_NE(tab, nullptr);
  EXPECT_EQ(tab->AsString(), std::wstring(L"a\tb\0c", 5));
  EXPECT_EQ(JSON::Parse(L"\"\\uABcd\"")->AsString(), std::wstring(1, wchar_t(0xABCD)));

  // Control characters, negative wide characters (widened bytes of 0x80 and above), unknown
  // or short escapes, and a missing closing quote fail.
  const std::wstring bad[] = {
      L"\"a\nb\"",  L"\"a\rb\"",    std::wstring(L"\"a") + wchar_t(-48) + L"\"",
      L"\"\\x41\"", L"\"\\u12\"",   L"\"\\u12g4\"",
      L"\"\\",      L"\"\\u",       L"\"open",
      L"\"\\a\"",   L"\"\\U0041\"", std::wstring(L"\"") + wchar_t(31) + L"\""};
  for (const auto& t : bad) {
    SCOPED_TRACE(t.size());
    EXPECT_EQ(JSON::Parse(t.c_str()), nullptr);
  }
}

TEST(JSONParse, NarrowTextGoesThroughTheCLocale) {
  // Under the C locale only ASCII converts; other bytes make the text unreadable.
  ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
  auto value = JSON::Parse("{\"a\": [1.5, \"x\"]}");
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->Child(L"a")->Child(size_t{0})->AsNumber(), 1.5);
  EXPECT_EQ(JSON::Parse("1 2"), nullptr);
  EXPECT_EQ(JSON::Parse("\"\xd0\x9f\""), nullptr);
  // Under a UTF-8 locale the same bytes are one Cyrillic letter.
  if (std::setlocale(LC_ALL, "C.UTF-8") != nullptr) {
    auto letter = JSON::Parse("\"\xd0\x9f\"");
    std::setlocale(LC_ALL, "C");
    ASSERT_NE(letter, nullptr);
    EXPECT_EQ(letter->AsString(), std::wstring(1, wchar_t(0x41F)));
  }
}

TEST(JSONStringify, PrintsCompactTextInKeyOrder) {
  EXPECT_EQ(JSON::Stringify(nullptr), L"");
  auto root = JSON::Parse(L"{\"z\": [1, true, null, [ ]], \"a\": \"x\", \"m\": { }}");
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(JSON::Stringify(root.get()), L"{\"a\":\"x\",\"m\":{},\"z\":[1,true,null,[]]}");
}

} // namespace
