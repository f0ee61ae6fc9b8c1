#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>

namespace vantorium::sandbox {

/// What reached the service: the newest entries in memory, all of them in the log file. Callable on any
/// thread.
class Journal {
 public:
  static constexpr size_t kept = 10'000;  ///< of each kind
  using Listener = std::function<void(const nlohmann::json&)>;
  using Predicate = std::function<bool(const nlohmann::json&)>;

  /// Throws std::runtime_error when the log cannot be written; an empty path means no log.
  Journal(const std::filesystem::path& log, Listener listener);

  void addRequest(nlohmann::json request);
  void addEvent(nlohmann::json event);
  nlohmann::json requests() const;
  nlohmann::json events() const;
  std::optional<nlohmann::json> waitForRequest(const Predicate& predicate,
                                               std::chrono::milliseconds timeout) const;
  void clear();
  /// Releases everybody who waits.
  void close();

 private:
  struct Entries {
    std::deque<std::shared_ptr<const nlohmann::json>> newest;
    uint64_t added = 0;
  };

  void add(Entries& entries, const char* type, nlohmann::json entry);
  nlohmann::json copy(const Entries& entries) const;

  const Listener listener_;
  mutable std::mutex mutex_;  // guards everything below
  mutable std::condition_variable changed_;
  std::ofstream log_;
  Entries requests_;
  Entries events_;
  bool closed_ = false;
};

}  // namespace vantorium::sandbox
