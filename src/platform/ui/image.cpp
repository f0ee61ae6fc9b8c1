#include "platform/ui/image.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <string_view>
#include <utility>

#include "platform/foundation/file_descriptor.hpp"
#include "platform/foundation/url.hpp"

namespace vantorium::ui {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t longestSignature = 12;

/// The kinds of picture that ads are made of. Others stay out, lest every decoder that a machine happens to
/// have meets bytes from the network.
bool beginsLikePicture(std::string_view bytes) {
  return bytes.starts_with("\x89PNG\r\n\x1a\n"sv) || bytes.starts_with("\xff\xd8\xff"sv) ||
         bytes.starts_with("GIF87a"sv) || bytes.starts_with("GIF89a"sv) ||
         (bytes.starts_with("RIFF"sv) && bytes.substr(0, longestSignature).ends_with("WEBP"sv));
}

}  // namespace

Image::Image(std::string name, Source source) : name_(std::move(name)), source_(std::move(source)) {
  // The same address may bring another picture the next time.
  identity_ = data() != nullptr ? "bytes " + makeUUID() : name_;
}

std::shared_ptr<const Image> Image::named(std::string name) {
  if (name.empty()) return nullptr;
  return std::shared_ptr<const Image>(new Image(std::move(name), Bundled{}));
}

std::shared_ptr<const Image> Image::contentsOfFile(const std::string& path) {
  // Not blocking: a pipe in the place of a file would wait for its writer.
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat facts {};
  if (!file.isOpen() || fstat(file.get(), &facts) != 0 || !S_ISREG(facts.st_mode)) return nullptr;
  if (static_cast<std::size_t>(facts.st_size) > largestFile) return nullptr;
  std::array<char, longestSignature> bytes{};
  const ssize_t count = pread(file.get(), bytes.data(), bytes.size(), 0);
  if (count <= 0 || !beginsLikePicture({bytes.data(), static_cast<std::size_t>(count)})) return nullptr;
  return std::shared_ptr<const Image>(new Image(path, File{}));
}

std::shared_ptr<const Image> Image::fromData(Data data, std::string name) {
  if (data.size() > largestFile || !beginsLikePicture(data.bytes())) return nullptr;
  return std::shared_ptr<const Image>(new Image(std::move(name), std::move(data)));
}

}  // namespace vantorium::ui
