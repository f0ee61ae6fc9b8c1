#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <vantorium/vantorium.hpp>

namespace vantorium::soak {

/// The calls that were made, each of which is answered exactly once. Any thread; kept by every completion, so
/// that one that comes too late is counted all the same.
class Calls : public std::enable_shared_from_this<Calls> {
 public:
  /// A completion of any kind that notes the answer and hands it on.
  template <typename... Results>
  std::function<void(Results...)> expect(std::string name, std::function<void(Results...)> then) {
    const std::uint64_t number = open(std::move(name));
    return [self = shared_from_this(), number, then = std::move(then)](Results... results) {
      self->close(number);
      if (then) then(std::move(results)...);
    };
  }

  /// The names of calls that were not answered yet.
  std::vector<std::string> open() const;
  std::uint64_t made() const;
  std::uint64_t answered() const;
  /// How many were answered a second time since this was asked last.
  std::uint64_t takeAnsweredAgain();
  /// Gives up waiting; an answer after all counts as a second one.
  void forgetOpen();

 private:
  std::uint64_t open(std::string name);
  void close(std::uint64_t number);

  mutable std::mutex mutex_;  // guards everything below
  std::map<std::uint64_t, std::string> open_;
  std::uint64_t made_ = 0;
  std::uint64_t answered_ = 0;
  std::uint64_t again_ = 0;
};

}  // namespace vantorium::soak
