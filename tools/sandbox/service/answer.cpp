#include "sandbox/service/answer.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace vantorium::sandbox {

struct Body::Source {
  explicit Source(std::string content) : text(std::move(content)) {}
  explicit Source(int descriptor) : fd(descriptor) {}
  ~Source() {
    if (fd >= 0) ::close(fd);
  }
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  std::string text;
  int fd = -1;
};

Body::Body(std::string text) : size_(text.size()) { source_ = std::make_shared<Source>(std::move(text)); }

std::optional<Body> Body::file(const std::filesystem::path& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  Body body;
  body.source_ = std::make_shared<Source>(fd);
  struct stat facts {};
  if (::fstat(fd, &facts) != 0 || !S_ISREG(facts.st_mode)) return std::nullopt;
  body.size_ = static_cast<size_t>(facts.st_size);
  return body;
}

std::string Body::read(size_t offset, size_t count) const {
  if (offset >= size_) return {};
  count = std::min(count, size_ - offset);
  if (source_->fd < 0) return source_->text.substr(offset, count);
  std::string bytes(count, '\0');
  const ssize_t got = ::pread(source_->fd, bytes.data(), count, static_cast<off_t>(offset));
  bytes.resize(got > 0 ? static_cast<size_t>(got) : 0);
  return bytes;
}

std::string toText(const nlohmann::json& value, int indent) {
  return value.dump(indent, ' ', false, nlohmann::json::error_handler_t::replace);
}

Answer jsonAnswer(const nlohmann::json& value, int status) {
  return {.status = status, .body = Body(toText(value, 2) + "\n")};
}

Answer success(nlohmann::json fields) {
  fields["status"] = "success";
  return jsonAnswer(fields);
}

Answer failure(const std::string& text, int status) {
  return jsonAnswer({{"status", "error"}, {"error", text}}, status);
}

}  // namespace vantorium::sandbox
