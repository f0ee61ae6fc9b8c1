#include "soak/calls.hpp"

namespace vantorium::soak {

std::uint64_t Calls::open(std::string name) {
  const std::lock_guard lock(mutex_);
  open_.emplace(++made_, std::move(name));
  return made_;
}

void Calls::close(std::uint64_t number) {
  const std::lock_guard lock(mutex_);
  ++answered_;
  if (open_.erase(number) == 0) ++again_;
}

std::vector<std::string> Calls::open() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> names;
  for (const auto& [number, name] : open_) names.push_back(name);
  return names;
}

std::uint64_t Calls::made() const {
  const std::lock_guard lock(mutex_);
  return made_;
}

std::uint64_t Calls::answered() const {
  const std::lock_guard lock(mutex_);
  return answered_;
}

std::uint64_t Calls::takeAnsweredAgain() {
  const std::lock_guard lock(mutex_);
  return std::exchange(again_, 0);
}

void Calls::forgetOpen() {
  const std::lock_guard lock(mutex_);
  open_.clear();
}

}  // namespace vantorium::soak
