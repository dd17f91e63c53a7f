#include "records/json/JSONValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "records/json/JSON.h"

namespace {

JSONArray arrayOf(std::unique_ptr<JSONValue> a, std::unique_ptr<JSONValue> b) {
  JSONArray elements;
  elements.push_back(std::move(a));
  elements.push_back(std::move(b));
  return elements;
}

TEST(JSONValue, ConstructorsGiveTheirTypes) {
  EXPECT_EQ(JSONValue().Type(), JSONType::Null);
  EXPECT_EQ(JSONValue(L"text").Type(), JSONType::String);
  EXPECT_EQ(JSONValue(std::wstring(L"text")).Type(), JSONType::String);
  EXPECT_EQ(JSONValue(true).Type(), JSONType::Bool);
  EXPECT_EQ(JSONValue(2.5).Type(), JSONType::Number);
  EXPECT_EQ(JSONValue(7).Type(), JSONType::Number);
  EXPECT_EQ(JSONValue(7).AsNumber(), 7.0);
  EXPECT_EQ(JSONValue(JSONArray{}).Type(), JSONType::Array);
  EXPECT_EQ(JSONValue(JSONObject{}).Type(), JSONType::Object);
  EXPECT_EQ(static_cast<int>(JSONType::Object), 5);
  EXPECT_EQ(static_cast<int>(JSONType::Number), 3);
}

TEST(JSONValue, AccessorsOfAnotherTypeReadAsEmpty) {
  const JSONValue text(L"12");
  EXPECT_TRUE(std::isnan(text.AsNumber()));
  EXPECT_FALSE(text.AsBool());
  EXPECT_TRUE(text.AsArray().empty());
  EXPECT_TRUE(text.AsObject().empty());
  EXPECT_EQ(text.CountChildren(), 0u);
  EXPECT_FALSE(text.HasChild(size_t{0}));
  EXPECT_EQ(text.Child(size_t{0}), nullptr);
  EXPECT_FALSE(text.HasChild(L"12"));
  EXPECT_EQ(text.Child(L"12"), nullptr);
  EXPECT_TRUE(text.ObjectKeys().empty());
  EXPECT_EQ(JSONValue(1.0).AsString(), L"");
}

TEST(JSONValue, ChildrenByIndexAndKey) {
  auto root = JSON::Parse(L"{\"list\": [10, 20], \"b\": true, \"a\": \"x\"}");
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->CountChildren(), 3u);
  EXPECT_TRUE(root->HasChild(L"list"));
  EXPECT_FALSE(root->HasChild(L"List"));
  EXPECT_EQ(root->Child(L"missing"), nullptr);
  EXPECT_FALSE(root->HasChild(size_t{0})); // an object has no index
  const JSONValue* list = root->Child(L"list");
  ASSERT_NE(list, nullptr);
  EXPECT_TRUE(list->HasChild(1));
  EXPECT_FALSE(list->HasChild(2));
  EXPECT_EQ(list->Child(1)->AsNumber(), 20.0);
  EXPECT_EQ(list->Child(2), nullptr);
  EXPECT_EQ(list->Child(static_cast<size_t>(-1)), nullptr);
  EXPECT_EQ(root->ObjectKeys(), (std::vector<std::wstring>{L"a", L"b", L"list"}));
}

TEST(JSONValue, CopyIsDeepAndMoveTransfers) {
  JSONObject members;
  members[L"list"] = std::make_unique<JSONValue>(
      arrayOf(std::make_unique<JSONValue>(1), std::make_unique<JSONValue>(L"a")));
  members[L"flag"] = std::make_unique<JSONValue>(false);
  JSONValue original(std::move(members));

  JSONValue copy(original);
  EXPECT_EQ(copy.Stringify(), original.Stringify());
  EXPECT_NE(copy.Child(L"list"), original.Child(L"list"));
  EXPECT_NE(copy.Child(L"list")->Child(size_t{0}), original.Child(L"list")->Child(size_t{0}));

  JSONValue assigned;
  assigned = original;
  original = JSONValue(3.0); // the copies own their own trees
  EXPECT_EQ(copy.Stringify(), L"{\"flag\":false,\"list\":[1,\"a\"]}");
  EXPECT_EQ(assigned.Stringify(), copy.Stringify());

  JSONValue moved(std::move(assigned));
  EXPECT_EQ(moved.Stringify(), copy.Stringify());
  JSONValue target;
  target = std::move(moved);
  EXPECT_EQ(target.Child(L"list")->Child(1)->AsString(), L"a");

  // Copying a parsed tree gives an equal tree.
  auto parsed = JSON::Parse(L"[{\"a\":[[1,2],{}]},null,\"s\",false,-1.5]");
  ASSERT_NE(parsed, nullptr);
  EXPECT_EQ(JSONValue(*parsed).Stringify(), parsed->Stringify());
}

TEST(JSONValue, StringifyEscapesForEveryReader) {
  std::wstring text = L"q\"b\\s/ \b\f\n\r\t~";
  text += wchar_t(0x7F);
  text += wchar_t(0x01);
  text += wchar_t(0xE9);
  text += wchar_t(0x41F);
  text += wchar_t(0x1F600); // beyond 16 bits: only F600 is kept
  text += wchar_t(-48);     // a widened byte 0xD0: the low 16 bits of its value
  EXPECT_EQ(JSONValue(text).Stringify(),
            L"\"q\\\"b\\\\s\\/ \\b\\f\\n\\r\\t~\\u007F\\u0001\\u00E9\\u041F\\uF600\\uFFD0\"");
  EXPECT_EQ(JSONValue(std::wstring(L"a\0b", 3)).Stringify(), L"\"a\\u0000b\"");
}

TEST(JSONValue, StringifyNumbersWithFifteenDigits) {
  EXPECT_EQ(JSONValue(0.1 + 0.2).Stringify(), L"0.3");
  EXPECT_EQ(JSONValue(150.0).Stringify(), L"150");
  EXPECT_EQ(JSONValue(-0.0).Stringify(), L"-0");
  EXPECT_EQ(JSONValue(1.0 / 3.0).Stringify(), L"0.333333333333333");
  EXPECT_EQ(JSONValue(123456789012345.0).Stringify(), L"123456789012345");
  EXPECT_EQ(JSONValue(1234567890123456.0).Stringify(), L"1.23456789012346e+15");
  EXPECT_EQ(JSONValue(0.0001).Stringify(), L"0.0001");
  EXPECT_EQ(JSONValue(0.00001).Stringify(), L"1e-05");
  EXPECT_EQ(JSONValue(std::numeric_limits<double>::infinity()).Stringify(), L"null");
  EXPECT_EQ(JSONValue(-std::numeric_limits<double>::infinity()).Stringify(), L"null");
  EXPECT_EQ(JSONValue(std::numeric_limits<double>::quiet_NaN()).Stringify(), L"null");
}

TEST(JSONValue, PrettyPrintIndentsContainersOnly) {
  auto root = JSON::Parse(L"{\"a\":[1,[2,3]],\"b\":{\"c\":null}}");
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->Stringify(true), L"{\n"
                                   L"  \"a\":[\n"
                                   L"    1,[\n"
                                   L"      2,3\n"
                                   L"    ]\n"
                                   L"  ],\"b\":{\n"
                                   L"    \"c\":null\n"
                                   L"  }\n"
                                   L"}");
  EXPECT_EQ(JSONValue(JSONArray{}).Stringify(true), L"[\n  \n]");
  EXPECT_EQ(JSONValue(true).Stringify(true), L"true");
}

TEST(JSONValue, PrintedTextParsesBack) {
  const wchar_t* documents[] = {
      L"{\"corridorActive\":[{\"codeMessage\":\"1001\",\"recommendations\":[1,2,3]}]}",
      L"[{\"name_param\":\"ku_vx\",\"value\":1.5},{\"name_param\":\"g\\/del\",\"value\":-2}]",
      L"{\"source\":[1,2],\"log\":true,\"kafka_topic\":\"t\\n\\u00E9\"}"};
  for (const wchar_t* document : documents) {
    auto first = JSON::Parse(document);
    ASSERT_NE(first, nullptr);
    const std::wstring printed = first->Stringify();
    auto second = JSON::Parse(printed.c_str());
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->Stringify(), printed);
    auto pretty = JSON::Parse(first->Stringify(true).c_str());
    ASSERT_NE(pretty, nullptr);
    EXPECT_EQ(pretty->Stringify(), printed);
  }
}

} // namespace
