#include "model/native_ad.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "platform/ui/image.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium {
namespace {

using nlohmann::json;

TEST(NativeAd, TakesEveryFieldOfItsType) {
  const auto ad = makeNativeAd(
      json::parse(
          R"({"info":{"adId":"a","appName":"n","appId":"s","landingPage":"l","rating":4,"reviews":12.0,
        "categories":["x","y"],"appDeveloper":"d","appDescription":"e","appIcon":"i"},
        "assets":[{"url":"u","type":"video","width":3,"height":2.5},{"type":"image","width":9}],
        "privacyPolicy":{"url":"pu","image":"pi"},"trackingUrl":"t","cta":"c","impressionId":"m"})"),
      "p");
  EXPECT_EQ(ad->adID + ad->appName + ad->storeAppID + ad->storeAppURL + ad->appDeveloper, "ansld");
  EXPECT_EQ(ad->rating, 4.0);
  EXPECT_EQ(ad->reviewsCount, 12);
  EXPECT_EQ(ad->categories, (std::vector<std::string>{"x", "y"}));
  EXPECT_EQ(ad->appDescription + ad->appIconURL + ad->privacyPolicyURL + ad->privacyPolicyImageURL, "eipupi");
  EXPECT_EQ(ad->trackingURL + ad->callToActionText + ad->impressionID + ad->placementID, "tcmp");
  ASSERT_EQ(ad->assets.size(), 2U);
  EXPECT_EQ(ad->assets[0]->URL + ad->assets[0]->type, "uvideo");
  EXPECT_EQ(ad->assets[0]->size, (VantoriumNativeAdAsset::Size{3, 2.5}));
  EXPECT_EQ(ad->assets[1]->size, VantoriumNativeAdAsset::Size()) << "half a size is none";
}

TEST(NativeAd, PassesOverWhatIsOfAnotherType) {
  const auto ad = makeNativeAd(
      json::parse(R"({"info":{"appName":7,"rating":"4","reviews":3.5,"categories":["x",1],"appIcon":null},
        "assets":[{"url":"u"},7],"privacyPolicy":"no","cta":["c"],"impressionId":"m"})"),
      "p");
  EXPECT_EQ(ad->appName + ad->appIconURL + ad->privacyPolicyURL + ad->callToActionText, "");
  EXPECT_EQ(ad->rating, 0);
  EXPECT_EQ(ad->reviewsCount, 0);
  EXPECT_TRUE(ad->categories.empty());
  EXPECT_TRUE(ad->assets.empty()) << "a list of anything but objects is no list of assets";
  EXPECT_EQ(ad->impressionID, "m");

  const auto bare = makeNativeAd(json::parse(R"({"assets":[{"url":"u"}],"cta":"c"})"), "p");
  EXPECT_EQ(bare->assets.size(), 1U) << "without \"info\" the rest is read all the same";
  EXPECT_EQ(bare->callToActionText, "c");
  EXPECT_EQ(makeNativeAd(json::array(), "p")->placementID, "p");
}

TEST(NativeAd, LooksForItsPicturesOnce) {
  testing::TemporaryDirectory folder;
  const auto write = [&](const std::string& name, const std::string& bytes) {
    std::ofstream(folder.path() / name, std::ios::binary) << bytes;
    return (folder.path() / name).string();
  };
  const std::string png = "\x89PNG\r\n\x1a\n and so on";
  VantoriumNativeAd ad;
  EXPECT_EQ(ad.appIconImage(), nullptr);
  ad.appIconFilePath = write("icon.png", png);
  EXPECT_EQ(ad.appIconImage(), nullptr) << "empty once is empty for good";

  const auto imageIn = [](const std::string& path) {
    VantoriumNativeAdAsset asset;
    asset.filePath = path;
    return asset.image();
  };
  const auto image = imageIn(write("a.png", png));
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->name(), (folder.path() / "a.png").string());
  EXPECT_NE(imageIn(write("a.jpg", "\xff\xd8\xff\xe0")), nullptr);
  EXPECT_NE(imageIn(write("a.gif", "GIF89a")), nullptr);
  EXPECT_NE(imageIn(write("a.webp", std::string("RIFF\x01\x02\x03\x04WEBPVP8 ", 16))), nullptr);
  for (const char* other : {"<html>", "", "\x89PNG", "RIFF1234WAVE", "<svg xmlns='x'/>", "BM12"}) {
    EXPECT_EQ(imageIn(write("other", other)), nullptr) << other;
  }
  EXPECT_EQ(imageIn(folder.path().string()), nullptr);
  EXPECT_EQ(imageIn((folder.path() / "missing").string()), nullptr);
  const std::string large = write("large.png", png);
  std::filesystem::resize_file(large, ui::Image::largestFile);
  EXPECT_NE(imageIn(large), nullptr);
  std::filesystem::resize_file(large, ui::Image::largestFile + 1);
  EXPECT_EQ(imageIn(large), nullptr);
}

}  // namespace
}  // namespace vantorium
