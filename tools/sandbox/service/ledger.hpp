#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>

namespace vantorium::sandbox {

/// The tokens and impressions that the service has handed out. Callable on any thread.
class Ledger {
 public:
  struct Event {
    std::string placement;
    int count;  ///< How many of this kind the impression has had, this one included.
  };

  void addToken(const std::string& token);
  bool knowsToken(const std::string& token) const;

  std::string newImpression(const std::string& placement);
  /// For impressions whose identifier a test chose.
  void addImpression(const std::string& impression, const std::string& placement);
  /// nullopt when nobody was given that impression.
  std::optional<Event> count(const std::string& impression, const std::string& kind);
  void forgetImpressions();

 private:
  struct Impression {
    std::string placement;
    std::map<std::string, int> events;
  };

  mutable std::mutex mutex_;  // guards both
  std::set<std::string> tokens_;
  std::map<std::string, Impression> impressions_;
};

/// Hexadecimal digits nobody can guess.
std::string randomHex(size_t bytes);

}  // namespace vantorium::sandbox
