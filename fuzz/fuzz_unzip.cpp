// Archives: whatever they hold, nothing is written outside the destination, and every handle is closed.
// Run it with scripts/fuzz, which seeds it with the corpus of the tests.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "archive/zip.hpp"
#include "fuzz/check.hpp"

namespace {

namespace fs = std::filesystem;

/// Where the archives of the corpus with absolute names would write.
constexpr const char* absoluteCage = "/tmp/fuzz-unzip-cage";

/// A folder in memory, where there is such, with a destination in it.
class Cage {
 public:
  Cage() {
    std::string name = fs::exists("/dev/shm") ? "/dev/shm/fuzz-unzip-XXXXXX" : "/tmp/fuzz-unzip-XXXXXX";
    FUZZ_CHECK(mkdtemp(name.data()) != nullptr);
    path_ = name;
    fs::create_directories(path_ / "a/b/c");
    fs::create_directory(path_ / "outside");
    std::ofstream(path_ / "outside/victim.txt") << "victim";
  }
  ~Cage() { fs::remove_all(path_); }
  Cage(const Cage&) = delete;
  Cage& operator=(const Cage&) = delete;

  fs::path archive() const { return path_ / "input.zip"; }
  fs::path destination() const { return path_ / "a/b/c/dest"; }

  /// The destination with a link out of it and a file, as an earlier archive could not have left it.
  void prepare(const std::uint8_t* bytes, std::size_t size) const {
    fs::remove_all(destination());
    fs::create_directory(destination());
    fs::create_directory_symlink(path_ / "outside", destination() / "link");
    std::ofstream(destination() / "a.txt") << "old";
    std::ofstream(archive(), std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
  }

  /// Whether all is as it was, but for the inside of the destination.
  bool isIntact(std::size_t archiveSize) const {
    std::string victim;
    std::ifstream(path_ / "outside/victim.txt") >> victim;
    return victim == "victim" && !fs::exists(absoluteCage) && entries(path_) == 3 &&
           entries(path_ / "a") == 1 && entries(path_ / "a/b") == 1 && entries(path_ / "a/b/c") == 1 &&
           entries(path_ / "outside") == 1 && fs::file_size(archive()) == archiveSize &&
           fs::is_symlink(destination() / "link") ==
               !fs::is_regular_file(fs::symlink_status(destination() / "link"));
  }

 private:
  static long entries(const fs::path& folder) {
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
  }

  fs::path path_;
};

/// The first descriptor that is free: the same before and after when nothing was left open.
int freeDescriptor() {
  const int descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  ::close(descriptor);
  return descriptor;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vantorium;
  static const Cage cage;
  cage.prepare(bytes, size);
  const int descriptor = freeDescriptor();
  const bool overwrite = size % 2 == 0;
  // Small, so that a run is short: the limits themselves are tested elsewhere.
  const ZipLimits limits{.entries = 64, .totalBytes = 1U << 20U, .nameBytes = 256};
  std::uint64_t reported = 0;
  const auto error = Zip::unzipFile(
      cage.archive(), cage.destination(), overwrite, "secret",
      [](double part) { FUZZ_CHECK(part >= 0 && part <= 1); },
      [&](const fs::path& path) {
        ++reported;
        FUZZ_CHECK((path.lexically_normal().string() + "/").starts_with(cage.destination().string() + "/"));
      },
      limits);
  FUZZ_CHECK(!error || error->code() == ZipError::unzipFail);
  FUZZ_CHECK(reported <= limits.entries);
  FUZZ_CHECK(freeDescriptor() == descriptor);
  FUZZ_CHECK(cage.isIntact(size));
  return 0;
}
