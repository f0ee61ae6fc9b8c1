#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/http/connection.hpp"
#include "sandbox/service/answer.hpp"
#include "sandbox/service/call.hpp"

namespace vantorium::sandbox {

/// A fault that is set: which requests it strikes, how often, and with what.
struct Fault {
  std::string path;  ///< Prefix of the decoded path.
  std::string name;
  nlohmann::json parameters;  ///< Complete: those not given have their defaults.
  std::optional<int> times;   ///< How often it still strikes; nullopt: for ever.
};

/// What becomes of a request that a fault struck.
struct Plan {
  std::optional<Answer> answer = {};  ///< Sent in the orderly way, unless `deliver` is there.
  std::function<void(Connection&)> deliver = nullptr;  ///< Does its own harm on the wire.
  std::chrono::milliseconds pause{0};                  ///< Before anything else happens.
};

/// What a fault can work with.
struct Victim {
  const Call& call;
  const nlohmann::json& noFill;        ///< The endpoint's own way of having nothing to offer.
  std::function<Answer()> trueAnswer;  ///< Does the endpoint's work.
};

Plan planFault(const Fault& fault, const Victim& victim);

/// Checks names and parameters. Throws std::invalid_argument saying what is wrong and what would be right.
std::vector<Fault> parseFaults(const nlohmann::json& description);

/// Every kind of fault with its parameters and their defaults.
nlohmann::json knownFaults();

/// The faults that are set. Callable on any thread.
class FaultTable {
 public:
  void set(std::vector<Fault> faults);
  void clear() { set({}); }
  /// The first that strikes this path; uses up one of its times.
  std::optional<Fault> strike(std::string_view path);
  nlohmann::json list() const;

 private:
  mutable std::mutex mutex_;
  std::vector<Fault> faults_;  // guarded by mutex_
};

}  // namespace vantorium::sandbox
