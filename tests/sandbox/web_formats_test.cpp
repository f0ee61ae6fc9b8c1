// The catalogue's popup and offer wall: what is filled in, and what it is filled into.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>

#include "sandbox/service/catalogue.hpp"

namespace vantorium::sandbox {
namespace {

namespace fs = std::filesystem;

std::set<std::string> placeholdersOf(const std::string& text) {
  std::set<std::string> keys;
  const std::regex placeholder(R"(\{\{([^{}]*)\}\})");
  for (std::sregex_iterator found(text.begin(), text.end(), placeholder), end; found != end; ++found) {
    keys.insert((*found)[1]);
  }
  return keys;
}

TEST(SandboxWebFormats, TemplateAndOfferHaveTheSameKeys) {
  const Catalogue catalogue(fs::path(VANTORIUM_SOURCE_DIR) / "tools/sandbox/catalogue");
  const std::string page = catalogue.popupTemplate().value();
  const nlohmann::json values = catalogue.offer("offer-main").value()["offer"];
  std::set<std::string> keys;
  for (const auto& [key, value] : values.items()) {
    keys.insert(key);
    EXPECT_TRUE(value.is_number() || value.is_string()) << key << " could not be filled in";
    if (!value.is_string()) continue;
    // They end up between quotation marks as well as between tags.
    EXPECT_EQ(value.get<std::string>().find_first_of("\"<>"), std::string::npos) << key;
    EXPECT_TRUE(placeholdersOf(value).empty()) << key << " would depend on the order of filling in";
  }
  EXPECT_EQ(placeholdersOf(page), keys);
  EXPECT_NE(page.find("\"click://"), std::string::npos);
  EXPECT_NE(page.find("\"closead://"), std::string::npos);
  EXPECT_FALSE(std::regex_search(page, std::regex("(src|href)=\"(https?:|/)|url\\(")))
      << "not self-contained";
}

TEST(SandboxWebFormats, WallIsOnePageWithItsOffers) {
  const auto folder = fs::path(testing::TempDir()) / "vantorium-sandbox-wall";
  fs::remove_all(folder);
  fs::copy(fs::path(VANTORIUM_SOURCE_DIR) / "tools/sandbox/catalogue", folder, fs::copy_options::recursive);
  std::ofstream(folder / "walls/hostile.json") << R"([{"name":"</script><script>{{x"}])";
  const Catalogue catalogue(folder);
  const auto offersIn = [](const std::string& page) {
    const std::string begin = "id=\"offers\">";
    const size_t from = page.find(begin) + begin.size();
    return nlohmann::json::parse(page.substr(from, page.find("</script>", from) - from));
  };
  const std::string page = catalogue.offerWall("wall-main").value();
  EXPECT_EQ(placeholdersOf(page), std::set<std::string>{});
  std::set<std::string> names;
  for (const auto& offer : offersIn(page)) {
    EXPECT_TRUE(offer["coins"].is_number_unsigned() && offer["minutes"].is_number_unsigned()) << offer;
    EXPECT_FALSE(offer["icon"]["shapes"].empty()) << offer;
    names.insert(offer["id"]);
  }
  EXPECT_GE(names.size(), 12U);
  EXPECT_EQ(offersIn(catalogue.offerWall("unheard-of").value()), nlohmann::json::array());
  EXPECT_EQ(offersIn(catalogue.offerWall("hostile").value())[0]["name"], "</script><script>{{x");
  fs::remove_all(folder);
}

}  // namespace
}  // namespace vantorium::sandbox
