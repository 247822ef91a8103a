#include "base/JsonReader.h"

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <gtest/gtest.h>

#include <tuple>

namespace ondrel::base {
namespace {

namespace json = boost::json;

// The accessors that make something of a value, as letters.
std::string typesOf(const JsonReader& at) {
  const bool read[] = {at.string().has_value(),  at.boolean().has_value(),
                       at.integer().has_value(), at.wholeNumber().has_value(),
                       at.number().has_value(),  at.array() != nullptr,
                       at.object() != nullptr,   at.isGiven()};
  std::string types;
  for (std::size_t i = 0; i < std::size(read); ++i)
    types += read[i] ? std::string(1, "SBIWNAOg"[i]) : "";
  return types;
}

TEST(JsonReader, TakesEachValueForWhatItIsAndAllElseForAbsent) {
  const std::pair<const char*, const char*> cases[] = {
      {R"("")", "Sg"},
      {"false", "Bg"},
      {"[]", "Ag"},
      {"{}", "Og"},
      {"null", ""},
      {"-9223372036854775808", "IWNg"},
      {"9223372036854775808", "Ng"},
      {"5.0", "WNg"},
      {"1e3", "WNg"},
      {"9.223372036854775808e18", "Ng"},
      {"1.5", "Ng"},
      {"1e999", "Ng"},
  };
  for (const auto& [text, types] : cases) {
    const auto value = json::parse(text);
    EXPECT_EQ(typesOf(JsonReader(value)), types) << text;
    EXPECT_EQ(typesOf(JsonReader(value)["x"]) + typesOf(JsonReader(value)[0]["x"][7]), "") << text;
  }
  const auto value = json::parse(R"({"a":[["x",{"n":1e3}],2,"y\u0000z"]})");
  const JsonReader reader(value.get_object());
  EXPECT_EQ(reader["a"][0][1]["n"].wholeNumber(), 1000);
  EXPECT_EQ(reader["a"].strings(), (std::vector<std::string>{std::string("y\0z", 3)}));
  EXPECT_EQ(reader["a"].size(), 3U);
  std::string field = "as it was";
  EXPECT_FALSE(reader["a"][1].read(field));
  EXPECT_EQ(field, "as it was");
}

TEST(JsonReader, TellsTheFirstFaultAndItsPlace) {
  const std::tuple<std::string, const char*, const char*> cases[] = {
      {"file", R"({"list":[{"s":"a","n":1},{"s":"b","n":2.5,"later":[]}]})", ""},
      {"file", R"({"list":[{"s":"a","n":1},{"s":null,"extra":-1}]})", R"(file.list[1].s|is not a string)"},
      {"file", R"({"list":[{"s":"a"},{}]})", R"(file.list[0]|has no "n")"},
      {"file", R"({"list":[[]]})", R"(file.list[0]|is not an object)"},
      {"file", R"({"list":{}})", R"(file.list|is not an array)"},
      {"file", "{}", R"(file|has no "list")"},
      {"file", "7", R"(file|is not an object)"},
      {"", R"({"list":[{"s":"","n":true}]})", R"(list[0].n|is not a number)"},
      {"", R"({"list":[{"s":"","n":1,"extra":-1}]})", R"(list[0].extra|is negative)"},
  };
  for (const auto& [name, text, expected] : cases) {
    const auto value = json::parse(text);
    std::optional<JsonFault> fault;
    for (const auto& element : JsonReader(value, fault, name)["list"].elements()) {
      std::string s;
      double n = 0;
      element["s"].read(s);
      element["n"].read(n);
      if (const auto extra = element["extra"]; extra.isGiven() && extra.integer() < 0)
        extra.complain("is negative");
    }
    EXPECT_EQ(fault ? fault->path + "|" + fault->what : "", expected) << text;
  }
}

} // namespace
} // namespace ondrel::base
