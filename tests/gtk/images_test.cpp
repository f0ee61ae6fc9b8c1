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
  EXPECT_EQ(decode(image), picture) << "kept with the image";
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
  EXPECT_EQ(decode(ui::Image::fromData(Data("<html>"), "https://ads.example/")), nullptr);
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
