// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Drivers.hpp"

#include <gmock/gmock.h>

#include "test/support/Check.hpp"
#include "test/support/Describe.hpp"
#include "test/support/Host.hpp"

namespace {

using Doubles::describe;
using Doubles::host;
using Doubles::Trace;
using Drivers::DriverArgs;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* kUnit = "Drivers/Drivers";

DriverArgs parsed(const std::string& text) {
  DriverArgs args;
  EXPECT_TRUE(args.parseJSON(text.c_str())) << text;
  args.json = nullptr;  // the text ends with this call
  return args;
}

TEST(DriverArgs, HasDefaults) {
  const DriverArgs args = parsed(R"({"did":3,"driver":"X","address":{"address":16}})");
  EXPECT_EQ(args.driver, "X");
  EXPECT_EQ(args.uid, 0xFFFFFFFFu);
  EXPECT_EQ(args.did, 3u);
  EXPECT_EQ(args.address.address, 16u);
  EXPECT_THAT(args.driverArgs, IsEmpty());
  EXPECT_FALSE(args.isMultiDevice);
  EXPECT_THAT(args.multiDeviceArgs, IsEmpty());
  EXPECT_TRUE(args.provideHam);
}

TEST(DriverArgs, TakesUidAndProvideHam) {
  EXPECT_EQ(parsed(describe(1, "X", "{}", R"(,"uid":42)")).uid, 42u);
  EXPECT_FALSE(parsed(describe(1, "X", "{}", R"(,"provideHam":0)")).provideHam);
  EXPECT_TRUE(parsed(describe(1, "X", "{}", R"(,"provideHam":2)")).provideHam);
}

TEST(DriverArgs, LeavesTheDriverAsItWasForNull) {
  const std::string text = R"({"did":1,"driver":null,"address":{"address":1}})";
  EXPECT_EQ(parsed(text).driver, "");
  DriverArgs named;
  named.driver = "Before";
  ASSERT_TRUE(named.parseJSON(text.c_str()));
  EXPECT_EQ(named.driver, "Before");
}

TEST(DriverArgs, IgnoresUnknownKeys) {
  EXPECT_EQ(parsed(describe(1, "X", "{}", R"(,"name":"fan1","more":[1])")).did, 1u);
}

TEST(DriverArgs, TakesNullForNoDriverArgs) {
  EXPECT_THAT(parsed(describe(1, "X", "null")).driverArgs, IsEmpty());
}

TEST(DriverArgs, KeepsEachSettingAsText) {
  const DriverArgs args =
      parsed(describe(1, "X", R"({"a":3,"b":-2,"c":2.5,"d":true,"e":"x","f":null})"));
  EXPECT_THAT(args.driverArgs, ElementsAre(Pair("a", "3"), Pair("b", "-2"), Pair("c", "2.5"),
                                           Pair("d", "true"), Pair("e", "x"), Pair("f", "")));
}

struct Setting {
  const char* json;
  const char* text;
};

constexpr Setting kSettings[] = {
    {"5", "5"},
    {"2147483647", "2147483647"},
    {"-2147483648", "-2147483648"},
    {"3000000000", "3000000000"},
    {"4294967295", "4294967295"},
    {"4294967296", ""},
    {"-2147483649", ""},
    {"1.5", "1.5"},
    {"5.0", "5"},
    {"1234567.0", "1.23457e+06"},
    {"-0.25", "-0.25"},
    {"false", "false"},
    {"true", "true"},
    {"\"a b\"", "a b"},
    {"\"\"", ""},
    {"[1]", ""},
    {"{\"k\":1}", ""},
};

TEST(DriverArgs, KeepASettingAsTheFirstTypeThatFits) {
  for (const Setting& setting : kSettings) {
    const DriverArgs args =
        parsed(describe(1, "X", std::string(R"({"key":)") + setting.json + "}"));
    EXPECT_EQ(args.driverArgs.at("key"), setting.text) << setting.json;
  }
}

TEST(DriverArgs, TakesTheLaterOfTwoSettingsWithOneName) {
  EXPECT_THAT(parsed(describe(1, "X", R"({"a":1,"a":2})")).driverArgs, ElementsAre(Pair("a", "2")));
}

TEST(DriverArgs, OfAContainerHoldItsDescriptions) {
  const DriverArgs args = parsed(
      describe(1, "X", "{}", R"(,"isMultiDevice":true,"multiDeviceArgs":{"b":"two","a":"one"})"));
  EXPECT_TRUE(args.isMultiDevice);
  EXPECT_THAT(args.multiDeviceArgs, ElementsAre(Pair("a", "one"), Pair("b", "two")));
}

TEST(DriverArgs, IgnoreMultiDeviceArgsOfAnythingElse) {
  const std::string texts = R"(,"multiDeviceArgs":{"a":7})";
  EXPECT_THAT(parsed(describe(1, "X", "{}", texts)).multiDeviceArgs, IsEmpty());
  EXPECT_THAT(parsed(describe(1, "X", "{}", R"(,"isMultiDevice":false)" + texts)).multiDeviceArgs,
              IsEmpty());
}

TEST(DriverArgs, OfAContainerMayBeNull) {
  const DriverArgs args =
      parsed(describe(1, "X", "{}", R"(,"isMultiDevice":true,"multiDeviceArgs":null)"));
  EXPECT_THAT(args.multiDeviceArgs, IsEmpty());
}

TEST(DriverArgs, RememberTheirText) {
  const std::string text = describe(1, "X");
  DriverArgs args;
  ASSERT_TRUE(args.parseJSON(text.c_str()));
  EXPECT_EQ(args.json, text.c_str());
}

TEST(DriverArgs, FromAValueHaveNoText) {
  rapidjson::Document json;
  json.Parse(describe(9, "X", R"({"a":1})").c_str());
  const auto args = DriverArgs::fromJSON(json);
  EXPECT_EQ(args->did, 9u);
  EXPECT_EQ(args->driverArgs.at("a"), "1");
  EXPECT_EQ(args->json, nullptr);
}

TEST(DriverArgs, AreCopiedWithTheirMaps) {
  const DriverArgs original = parsed(describe(1, "X", R"({"a":1})"));
  DriverArgs copy = original;
  copy.driverArgs["a"] = "2";
  EXPECT_EQ(original.driverArgs.at("a"), "1");
}

// What stops the process.

TEST(DriverArgs, WantAnObject) { EXPECT_CHECK(parsed("[]"), kUnit, "json.IsObject()"); }

TEST(DriverArgs, WantADid) {
  EXPECT_CHECK(parsed(R"({"driver":"X","address":{"address":1}})"), kUnit,
               "json.HasMember( \"did\" )");
}

TEST(DriverArgs, WantADriver) {
  EXPECT_CHECK(parsed(R"({"did":1,"address":{"address":1}})"), kUnit,
               "json.HasMember( \"driver\" )");
}

TEST(DriverArgs, WantAnAddress) {
  EXPECT_CHECK(parsed(R"({"did":1,"driver":"X"})"), kUnit, "json.HasMember( \"address\" )");
}

TEST(DriverArgs, OfAContainerWantItsDescriptions) {
  EXPECT_CHECK(parsed(R"({"did":1,"driver":"X","isMultiDevice":true})"), kUnit,
               "json.HasMember( \"multiDeviceArgs\" )");
}

TEST(DriverArgs, WantTheRightTypes) {
  constexpr const char* kJson = "rapidjson/document";
  const std::string address = R"("address":{"address":1})";
  EXPECT_CHECK(parsed(R"({"did":-1,"driver":"X",)" + address + "}"), kJson,
               "data_.f.flags & kUintFlag");
  EXPECT_CHECK(parsed(R"({"did":4294967296,"driver":"X",)" + address + "}"), kJson,
               "data_.f.flags & kUintFlag");
  EXPECT_CHECK(parsed(R"({"did":1.5,"driver":"X",)" + address + "}"), kJson,
               "data_.f.flags & kUintFlag");
  EXPECT_CHECK(parsed(R"({"did":1,"driver":7,)" + address + "}"), kJson, "IsString()");
  EXPECT_CHECK(parsed(describe(1, "X", "{}", R"(,"isMultiDevice":1)")), kJson, "IsBool()");
  EXPECT_CHECK(parsed(describe(1, "X", "{}", R"(,"provideHam":true)")), kJson,
               "data_.f.flags & kUintFlag");
  EXPECT_CHECK(parsed(describe(1, "X", "[]")), kJson, "IsObject()");
  EXPECT_CHECK(parsed(describe(1, "X", "{}", R"(,"isMultiDevice":true,"multiDeviceArgs":{"a":1})")),
               kJson, "IsString()");
}

// Texts that are not JSON.

struct BadText {
  const char* text;
  const char* message;
};

constexpr BadText kBadTexts[] = {
    {"", "The document is empty. offset 0"},
    {" \t\r\n", "The document is empty. offset 4"},
    {"{} x", "The document root must not be followed by other values. offset 3"},
    {"fan", "Invalid value. offset 2"},
    {"{1", "Missing a name for object member. offset 1"},
    {"{\"a\" 1", "Missing a colon after a name of object member. offset 5"},
    {"{\"a\":1 2", "Missing a comma or '}' after an object member. offset 7"},
    {"[1 2", "Missing a comma or ']' after an array element. offset 3"},
    {"[\"\\u12G4\"]", "Incorrect hex digit after \\u escape in string. offset 2"},
    {"[\"\\uD800x\"]", "The surrogate pair in string is invalid. offset 2"},
    {"[\"\\q\"]", "Invalid escape character in string. offset 2"},
    {"[\"a", "Missing a closing quotation mark in string. offset 3"},
    {"[1e999]", "Number too big to be stored in double. offset 1"},
    {"[1.]", "Miss fraction part in number. offset 3"},
    {"[1e]", "Miss exponent in number. offset 3"},
};

TEST(DriverArgs, OfATextThatIsNotJsonStayAsTheyWere) {
  for (const BadText& bad : kBadTexts) {
    host().traces.clear();
    DriverArgs args;
    args.did = 77;
    EXPECT_FALSE(args.parseJSON(bad.text)) << bad.text;
    EXPECT_THAT(
        host().traces,
        ElementsAre(Trace{0, std::string("failed to load device from json: ") + bad.message}))
        << bad.text;
    EXPECT_EQ(args.did, 77u);
    EXPECT_EQ(args.json, nullptr);
  }
}

}  // namespace
