#include "platform/net/http_body.hpp"

#include <utility>

#include "platform/foundation/files.hpp"

namespace vantorium {

namespace {

// libcurl hands over 16 KiB at a time; the file system likes more.
constexpr std::size_t writeBlock = std::size_t{256} * 1024;

}  // namespace

HTTPBody::HTTPBody(std::filesystem::path spoolDirectory, std::size_t spoolAbove)
    : spoolDirectory_(std::move(spoolDirectory)), spoolAbove_(spoolAbove) {}

std::optional<Error> HTTPBody::append(std::string_view bytes) {
  size_ += bytes.size();
  buffer_ += bytes;
  if (spool_) return buffer_.size() >= writeBlock ? flush() : std::nullopt;
  if (size_ <= spoolAbove_) return std::nullopt;
  createDirectoryIfNeeded(spoolDirectory_);
  std::optional<Error> error;
  auto file = TemporaryFile::create(spoolDirectory_, "body.", error);
  if (!file) return error;
  spool_.emplace(std::move(*file));
  return flush();
}

std::optional<Error> HTTPBody::flush() {
  auto error = spool_->append(buffer_);
  buffer_.clear();
  return error;
}

std::optional<Data> HTTPBody::take(std::optional<Error>& error) {
  if (!spool_) return Data(std::move(buffer_));
  if ((error = flush())) return std::nullopt;
  auto data = Data::adoptFile(spool_->descriptor(), spool_->path(), error);
  if (data) spool_->release();
  return data;
}

}  // namespace vantorium
