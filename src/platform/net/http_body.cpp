#include "platform/net/http_body.hpp"

#include <utility>

#include "platform/foundation/files.hpp"

namespace vantorium {

namespace {

/// Fewer bytes wait for more before they are written: each write has its price.
constexpr std::size_t writeBlock = std::size_t{128} * 1024;

}  // namespace

HTTPBody::HTTPBody(std::filesystem::path spoolDirectory, std::size_t spoolAbove)
    : spoolDirectory_(std::move(spoolDirectory)), spoolAbove_(spoolAbove) {}

std::optional<Error> HTTPBody::expect(std::uint64_t size) {
  if (size > spoolAbove_) return openSpool();
  buffer_.reserve(size);
  return std::nullopt;
}

std::optional<Error> HTTPBody::append(std::string_view bytes) {
  size_ += bytes.size();
  if (!spool_ && size_ > spoolAbove_) {
    if (auto error = openSpool()) return error;
  }
  if (!spool_ || buffer_.size() + bytes.size() < writeBlock) {
    buffer_ += bytes;
    return std::nullopt;
  }
  if (auto error = flush()) return error;
  return spool_->append(bytes);
}

std::optional<Error> HTTPBody::openSpool() {
  if (auto error = createDirectoryIfNeeded(spoolDirectory_)) return error;
  std::optional<Error> error;
  auto file = TemporaryFile::create(spoolDirectory_, "body.", error);
  if (!file) return error;
  spool_.emplace(std::move(*file));
  return std::nullopt;
}

std::optional<Error> HTTPBody::flush() {
  if (buffer_.empty()) return std::nullopt;
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
