// The catalogue's native ads: what they name is there, and is what they say.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>

#include "sandbox/service/catalogue.hpp"

namespace vantorium::sandbox {
namespace {

using nlohmann::json;

struct Picture {
  std::string contentType;
  size_t width = 0;
  size_t height = 0;
  bool whole = false;

  friend bool operator==(const Picture&, const Picture&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Picture& picture) {
    return out << picture.contentType << ' ' << picture.width << 'x' << picture.height
               << (picture.whole ? "" : ", not whole");
  }
};

size_t number(const std::string& bytes, size_t at, size_t count) {  // big-endian; 0 beyond the end
  size_t value = 0;
  for (size_t i = 0; i < count && at + i < bytes.size(); ++i) {
    value = value << 8U | static_cast<uint8_t>(bytes[at + i]);
  }
  return value;
}

Picture readPNG(const std::string& bytes) {
  return {"image/png", number(bytes, 16, 4), number(bytes, 20, 4),
          bytes.ends_with(std::string("IEND\xAE\x42\x60\x82"))};
}

Picture readJPEG(const std::string& bytes) {
  size_t at = 2;
  while (at < bytes.size() && number(bytes, at, 2) != 0xFFC0 && number(bytes, at, 2) != 0xFFDA) {
    at += 2 + number(bytes, at + 2, 2);
  }
  return {"image/jpeg", number(bytes, at + 7, 2), number(bytes, at + 5, 2), bytes.ends_with("\xFF\xD9")};
}

// Whole when it can start before it has arrived: everything about the frames first, then all of them.
Picture readMP4(const std::string& bytes) {
  std::string order;
  size_t at = 0;
  while (at + 8 <= bytes.size() && number(bytes, at, 4) >= 8) {
    order += bytes.substr(at + 4, 4) + ' ';
    at += number(bytes, at, 4);
  }
  const size_t entry = bytes.rfind("avc1", bytes.find("mdat"));
  return {"video/mp4", number(bytes, entry + 28, 2), number(bytes, entry + 30, 2),
          at == bytes.size() && order.find("moov") < order.find("mdat") &&
              order.find("mdat") != std::string::npos && bytes.find("mp4a") != std::string::npos};
}

Picture read(const std::string& bytes) {
  if (bytes.starts_with("\x89PNG\r\n\x1A\n")) return readPNG(bytes);
  if (bytes.starts_with("\xFF\xD8\xFF")) return readJPEG(bytes);
  if (bytes.substr(0, 8).ends_with("ftyp")) return readMP4(bytes);
  return {"unknown"};
}

class SandboxNativeTest : public testing::Test {
 protected:
  SandboxNativeTest() : catalogue(std::filesystem::path(VANTORIUM_SOURCE_DIR) / "tools/sandbox/catalogue") {
    catalogue.setBaseURL(base);
  }

  std::optional<Answer> served(const std::string& url) const {
    if (!url.starts_with(base)) return std::nullopt;
    return catalogue.file(url.substr(base.size(), url.find('?') - base.size()));
  }

  // Nothing when its content is not of the type that it is served with.
  Picture pictureAt(const std::string& url) const {
    const auto answer = served(url);
    if (!answer) return {"not served"};
    Picture picture = read(answer->body.read(0, answer->body.size()));
    if (picture.contentType != answer->contentType)
      picture.contentType += " served as " + answer->contentType;
    return picture;
  }

  std::string typeAt(const std::string& url) const {
    const auto answer = served(url);
    return answer ? answer->contentType : "not served";
  }

  const std::string base = "http://host";
  Catalogue catalogue;
};

TEST_F(SandboxNativeTest, AdsNameWhatIsThereAndWhatItIs) {
  for (const char* placement :
       {"native-video", "native-images", "native-row", "native-feed", "native-ratings", "native-texts"}) {
    const auto ads = catalogue.nativeAds(placement);
    ASSERT_TRUE(ads && !ads->empty()) << placement;
    for (const auto& ad : *ads) {
      SCOPED_TRACE(std::string(placement) + ", " + ad["info"]["adId"].get<std::string>());
      EXPECT_EQ(pictureAt(ad["info"]["appIcon"]), (Picture{"image/png", 512, 512, true}));
      EXPECT_EQ(pictureAt(ad["privacyPolicy"]["image"]), (Picture{"image/png", 64, 64, true}));
      EXPECT_EQ(typeAt(ad["privacyPolicy"]["url"]), "text/html; charset=utf-8");
      EXPECT_EQ(typeAt(ad["trackingUrl"]), "text/html; charset=utf-8");
      for (const auto& asset : ad["assets"]) {
        const Picture picture = pictureAt(asset["url"]);
        EXPECT_TRUE(picture.contentType.starts_with(asset["type"].get<std::string>() + "/")) << asset;
        EXPECT_EQ(picture, (Picture{picture.contentType, asset["width"], asset["height"], true})) << asset;
      }
    }
  }
}

TEST_F(SandboxNativeTest, HostileFilesAreThereAndBroken) {
  size_t files = 0;
  const auto look = [&](const std::string& url) {
    const size_t name = url.find("/broken/") + 8;
    if (name < 8 || url.find("..") != std::string::npos) return;
    ++files;
    const Picture picture = pictureAt(url);
    if (url.find("/missing.") != std::string::npos) {
      EXPECT_EQ(picture.contentType, "not served") << url;
    } else {
      EXPECT_NE(picture.contentType, "not served") << url;
      EXPECT_FALSE(picture.whole && picture.width * picture.height < 1'000'000) << url << " is well";
    }
  };
  for (const char* placement : {"native-hostile-images", "native-hostile-video"}) {
    const auto ads = catalogue.nativeAds(placement);
    ASSERT_TRUE(ads) << placement;
    EXPECT_EQ(ads->size(), 5U) << "what one request can ask for";
    for (const auto& ad : *ads) {
      look(ad["info"]["appIcon"]);
      if (!ad["assets"].is_array()) continue;  // the thousand
      for (const auto& asset : ad["assets"]) look(asset["url"]);
    }
  }
  EXPECT_GE(files, 14U);
}

}  // namespace
}  // namespace vantorium::sandbox
