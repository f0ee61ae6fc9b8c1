#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vantorium::sandbox {

/// Immutable bytes of an answer: text in memory, or a file read piece by piece. Cheap to copy.
class Body {
 public:
  Body() = default;
  Body(std::string text);  // NOLINT(google-explicit-constructor): a text is a body
  /// nullopt when it is not a readable regular file.
  static std::optional<Body> file(const std::filesystem::path& path);

  size_t size() const { return size_; }
  /// At most `count` bytes from `offset`; fewer only at the end or when the file shrank.
  std::string read(size_t offset, size_t count) const;

 private:
  struct Source;
  std::shared_ptr<const Source> source_;
  size_t size_ = 0;
};

struct Answer {
  int status = 200;
  std::string contentType = "application/json";
  Body body = {};
  std::vector<std::pair<std::string, std::string>> headers = {};
};

/// JSON text of anything, also of strings that are not UTF-8.
std::string toText(const nlohmann::json& value, int indent = -1);

Answer jsonAnswer(const nlohmann::json& value, int status = 200);
/// {"status":"success", …fields}
Answer success(nlohmann::json fields = nlohmann::json::object());
/// {"status":"error","error":text}
Answer failure(const std::string& text, int status = 200);

}  // namespace vantorium::sandbox
