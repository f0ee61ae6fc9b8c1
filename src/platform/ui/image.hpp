#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <variant>

#include <vantorium/export.h>

#include "platform/foundation/data.hpp"

namespace vantorium::ui {

/// A picture to be drawn: one of the SDK's bundle, or one of an ad, which came from the network and may be
/// anything. It is not decoded here but by the host that shows it. Immutable; any thread.
class VANTORIUM_HOST_API Image {
 public:
  /// Larger files are not taken for pictures.
  static constexpr std::size_t largestFile = std::size_t{32} << 20U;

  /// An image of the SDK's resource bundle, by its name there: "rating_full" or "icons/close.svg". Null for
  /// no name.
  static std::shared_ptr<const Image> named(std::string name);
  /// The picture in a file; null when the file cannot be read, is too large or does not begin like a PNG,
  /// JPEG, GIF or WebP. Reads no more than that beginning.
  static std::shared_ptr<const Image> contentsOfFile(const std::string& path);
  /// The picture in these bytes, found at `name`; null as above.
  static std::shared_ptr<const Image> fromData(Data data, std::string name);

  /// What it is called: the name in the bundle, the path of the file, or where its bytes are from.
  const std::string& name() const { return name_; }
  bool isBundled() const { return std::holds_alternative<Bundled>(source_); }
  /// The bytes, when they are in memory; null for a file or an image of the bundle.
  const Data* data() const { return std::get_if<Data>(&source_); }
  /// Equal for images that look the same: those of one file, and copies of one that came as bytes.
  const std::string& identity() const { return identity_; }

 private:
  struct Bundled {};
  struct File {};
  using Source = std::variant<Bundled, File, Data>;
  Image(std::string name, Source source);

  std::string name_;
  Source source_;
  std::string identity_;
};

}  // namespace vantorium::ui
