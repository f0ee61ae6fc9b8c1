#include <fstream>

#include "gtk/support/desktop.hpp"
#include "hosts/gtk/image_paintable.hpp"

namespace vantorium::test {
namespace {

constexpr const char* pictures = VANTORIUM_SOURCE_DIR "/tools/sandbox/catalogue/static/native/";

class ImagesTest : public DesktopTest {
 protected:
  /// What is decoded of a file of the catalogue: null for nothing.
  gtk::ImageLoader::Picture decode(const std::shared_ptr<const ui::Image>& image) {
    if (!image) return nullptr;
    bool isDone = false;
    gtk::ImageLoader::Picture decoded;
    host->application().images()->load(image, [&](gtk::ImageLoader::Picture picture) {
      decoded = std::move(picture);
      isDone = true;
    });
    EXPECT_TRUE(waitFor([&] { return isDone; }));
    return decoded;
  }
  gtk::ImageLoader::Picture decode(const std::string& name) {
    return decode(ui::Image::contentsOfFile(pictures + name));
  }
  /// The most memory this process has had, in KiB.
  static long peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
      if (word != "VmHWM:") continue;
      long value = 0;
      status >> value;
      return value;
    }
    return 0;
  }
};

TEST_F(ImagesTest, DecodesEachPictureOnceInSizesThatAreSharp) {
  const auto image = ui::Image::contentsOfFile(std::string(pictures) + "orbit-courier-icon.png");
  const auto picture = decode(image);
  ASSERT_NE(picture, nullptr);
  EXPECT_EQ(decode(image), picture);
  EXPECT_EQ(decode("orbit-courier-icon.png"), picture) << "the same file, asked for anew";
  ASSERT_EQ(picture->levels.size(), 5U);  // 512, 256, 128, 64, 32
  EXPECT_EQ(picture->levels.back()->get_width(), 32);
  const auto paintable = gtk::makePaintable(picture, 1);
  EXPECT_EQ(paintable->get_intrinsic_width(), 512);
  EXPECT_EQ(paintable->get_intrinsic_height(), 512);
  EXPECT_NE(decode("cairnway-sunrise.jpg"), nullptr);
}

TEST_F(ImagesTest, DecodesFromMemoryAsFromAFile) {
  std::ifstream file(std::string(pictures) + "privacy.png", std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  const auto picture = decode(ui::Image::fromData(Data(bytes), "https://ads.example/privacy.png"));
  ASSERT_NE(picture, nullptr);
  EXPECT_EQ(picture->width(), 64);
  // The smallest WebP: one pixel.
  const std::string webp(
      "RIFF\x24\0\0\0WEBPVP8 "
      "\x18\0\0\0\x30\x01\0\x9d\x01\x2a\x01\0\x01\0\x01\x40\x26\x25\xa4\0\x03\x70\0\xfe\xfd\x36\x68\0",
      44);
  EXPECT_NE(decode(ui::Image::fromData(Data(webp), "https://ads.example/pixel.webp")), nullptr);
  EXPECT_EQ(decode(ui::Image::fromData(Data("<html>"), "https://ads.example/")), nullptr);
}

TEST_F(ImagesTest, KeepsWhatWasShownLastAndNotAll) {
  std::ifstream file(std::string(pictures) + "cairnway-sunrise.jpg", std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  std::vector<std::shared_ptr<const ui::Image>> all;
  std::vector<std::weak_ptr<const gtk::DecodedImage>> decoded;
  for (int number = 0; number < 30; ++number) {  // of four megabytes each
    all.push_back(ui::Image::fromData(Data(bytes), "https://ads.example/"));
    decoded.push_back(decode(all.back()));
  }
  settle();
  EXPECT_TRUE(decoded.front().expired());
  EXPECT_FALSE(decoded.back().expired());
  EXPECT_NE(decode(all.front()), nullptr) << "decoded anew";
}

TEST_F(ImagesTest, BrokenPicturesShowNothingAndCostNothing) {
  decode("orbit-courier-icon.png");
  const long before = peakMemory();
  for (const char* name :
       {"bomb.png", "huge.png", "lying.gif", "lying.jpg", "overflowing.gif", "truncated.png", "truncated.jpg",
        "page.png", "empty.png", "drawing.png", "missing.png"}) {
    EXPECT_EQ(decode("broken/" + std::string(name)), nullptr) << name;
  }
  EXPECT_LT(peakMemory() - before, 64 * 1024) << "KiB; the bombs claim up to ten gigabytes";
}

}  // namespace
}  // namespace vantorium::test
