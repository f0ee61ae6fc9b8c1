#include "precache/template_page.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "precache/end_card_page.hpp"

namespace vantorium {
namespace {

using nlohmann::json;

std::string filled(const std::string& page, const std::string& values) {
  return filledTemplate(page, json::parse(values)).value_or("too large");
}

TEST(TemplatePageTest, InsertsTextAndNumbersAsTheyStand) {
  EXPECT_EQ(filled("<p>{{title}} +{{coins}}</p>{{title}}", R"({"title": "Play", "coins": 50})"),
            "<p>Play +50</p>Play");
  for (const auto& [number, text] :
       std::map<std::string, std::string>{{"2.5", "2.5"},
                                          {"3.0", "3"},
                                          {"-0.0", "0"},
                                          {"-7", "-7"},
                                          {"0.1", "0.1"},
                                          {"1e-7", "0.0000001"},
                                          {"1e21", "1000000000000000000000"},
                                          {"18446744073709551615", "18446744073709551615"}})
    EXPECT_EQ(filled("{{n}}", "{\"n\": " + number + "}"), text);
  const std::string untouched = "{{list}}{{map}}{{none}}{{yes}}{{ title }}{{missing}}{{title";
  EXPECT_EQ(filled(untouched, R"({"list": [1], "map": {}, "none": null, "yes": true, "title": "x"})"),
            untouched);
  EXPECT_EQ(filled("a{{}}b", R"({"": "<b>&"})"), "a<b>&b");
}

TEST(TemplatePageTest, SeesPlaceholdersThatFormOnTheWay) {
  EXPECT_EQ(filled("{{{a}}}{{b}", R"({"a": "1", "b": "2"})"), "{1}{{b}");
  EXPECT_EQ(filled("{{a}}", R"({"a": "x{{b}}{{b}}", "b": "2"})"), "x22") << "from a value";
  EXPECT_EQ(filled("{{{{a}}}}", R"({"a": "b", "b": "2"})"), "2") << "around a value";
  EXPECT_EQ(filled("{{{a}}{b}}{{{a}}b}}", R"({"a": "{", "b": "2"})"), "{22") << "on both sides of one";
  EXPECT_EQ(filled("{{a}}{b}}", R"({"a": "{", "b": "2"})"), "2") << "between a value and what follows";
  EXPECT_EQ(filled("{{x}}y}}", R"({"x": "1", "x}}y": "2"})"), "1y}}");
}

TEST(TemplatePageTest, StaysWithinBounds) {
  std::string doubling = "{{a}}";
  json values;
  for (char key = 'a'; key < 'z'; ++key) {
    const std::string next = std::string("{{") + static_cast<char>(key + 1) + "}}";
    values[std::string(1, key)] = next + next;
  }
  EXPECT_FALSE(filledTemplate(doubling, values)) << "2^25 placeholders";
  EXPECT_FALSE(filledTemplate(std::string(largestPage + 1, ' '), json::object()));
  json many = json::object();
  for (int number = 0; number < 10'000; ++number) many["key" + std::to_string(number)] = number;
  EXPECT_EQ(filledTemplate("{{key9999}}", many), "9999");
  EXPECT_FALSE(filledTemplate(std::string(std::size_t{1} << 20U, '{'), many)) << "too much to look at";
}

}  // namespace
}  // namespace vantorium
