#include "sandbox/service/ledger.hpp"

#include <fmt/format.h>
#include <openssl/rand.h>

#include <vector>

namespace vantorium::sandbox {

std::string randomHex(size_t bytes) {
  std::vector<unsigned char> random(bytes);
  RAND_bytes(random.data(), static_cast<int>(random.size()));
  return fmt::format("{:02x}", fmt::join(random, ""));
}

void Ledger::addToken(const std::string& token) {
  const std::lock_guard lock(mutex_);
  tokens_.insert(token);
}

bool Ledger::knowsToken(const std::string& token) const {
  const std::lock_guard lock(mutex_);
  return tokens_.contains(token);
}

std::string Ledger::newImpression(const std::string& placement) {
  std::string impression = "imp-" + randomHex(8);
  addImpression(impression, placement);
  return impression;
}

void Ledger::addImpression(const std::string& impression, const std::string& placement) {
  const std::lock_guard lock(mutex_);
  impressions_[impression].placement = placement;
}

std::optional<Ledger::Event> Ledger::count(const std::string& impression, const std::string& kind) {
  const std::lock_guard lock(mutex_);
  const auto found = impressions_.find(impression);
  if (found == impressions_.end()) return std::nullopt;
  return Event{found->second.placement, ++found->second.events[kind]};
}

void Ledger::forgetImpressions() {
  const std::lock_guard lock(mutex_);
  impressions_.clear();
}

}  // namespace vantorium::sandbox
