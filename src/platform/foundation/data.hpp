#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <vantorium/error.hpp>
#include <vantorium/export.h>

namespace vantorium {

/// An immutable, shared run of bytes. Copying a `Data` shares the bytes; reading one is safe on any thread.
///
/// Bytes come from memory or from a spool file that is mapped (a download that grew past what memory should
/// hold).
class VANTORIUM_HOST_API Data {
 public:
  /// No bytes, which is not the same as no data.
  Data();
  /// Takes over `bytes`.
  explicit Data(std::string bytes);
  /// Takes over the file at `path`: maps it, and removes it when the last `Data` that shares it goes, unless
  /// `write` has moved it away. Fails with a "posix" error when the file cannot be opened or mapped.
  static std::optional<Data> adoptFile(const std::filesystem::path& path, std::optional<Error>& error);
  /// The same for a file that is open already, so that it does not matter when somebody has emptied the
  /// folder in the meantime. The descriptor stays the caller's.
  static std::optional<Data> adoptFile(int descriptor, const std::filesystem::path& path,
                                       std::optional<Error>& error);

  std::string_view bytes() const;
  std::size_t size() const { return bytes().size(); }

  /// Puts the bytes at `path`, replacing what is there at once: a reader sees the old file or the whole new
  /// one. A spooled body is moved there if both lie on one file system (later calls, and others, copy). The
  /// parent must exist. Returns the failure; the old file is then untouched.
  std::optional<Error> write(const std::filesystem::path& path) const;

 private:
  class Storage;
  explicit Data(std::shared_ptr<Storage> storage);
  std::shared_ptr<Storage> storage_;
};

}  // namespace vantorium
