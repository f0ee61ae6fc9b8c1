#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include <vantorium/error.hpp>

#include "platform/foundation/data.hpp"
#include "platform/foundation/temporary_file.hpp"

namespace vantorium {

/// Collects the body of one answer: in memory at first and, once it outgrows that, in a spool file that goes
/// with this object unless it was taken. One thread.
class HTTPBody {
 public:
  /// `spoolDirectory` is created when the first byte goes there.
  HTTPBody(std::filesystem::path spoolDirectory, std::size_t spoolAbove);

  /// So many bytes will come, as the answer says before the first; it may be wrong. Fails as `append`.
  std::optional<Error> expect(std::uint64_t size);
  /// Returns the failure to write the spool file, a "posix" error; the body is then of no more use.
  std::optional<Error> append(std::string_view bytes);
  std::uint64_t size() const { return size_; }

  /// The whole body; none with `error` set when the spool file fails.
  std::optional<Data> take(std::optional<Error>& error);

 private:
  std::optional<Error> openSpool();
  std::optional<Error> flush();

  std::filesystem::path spoolDirectory_;
  std::size_t spoolAbove_;
  std::uint64_t size_ = 0;
  std::string buffer_;  // the whole body, or what is not in the spool file yet
  std::optional<TemporaryFile> spool_;
};

}  // namespace vantorium
