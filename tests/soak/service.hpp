#pragma once

#include <sys/types.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "soak/options.hpp"

namespace httplib {
class Client;
}

namespace vantorium::soak {

/// The ad service in a process of its own, so that what is measured here is the SDK's alone. It ends with
/// this object, and with this process, however that ends. Every function throws std::runtime_error when the
/// service does not answer.
class Service {
 public:
  explicit Service(const Options& options);
  ~Service();
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  const std::string& baseURL() const { return baseURL_; }
  /// Sets these faults in place of those before.
  void setFaults(const nlohmann::json& faults);
  /// Ends every connection and lets nobody connect for so many seconds. Returns when nobody can.
  void beginOutage(double seconds);
  /// What arrived so far; "impressions" tells of those that are named.
  nlohmann::json tally(const nlohmann::json& impressions = nlohmann::json::array());

 private:
  nlohmann::json post(const std::string& path, const nlohmann::json& body);

  pid_t process_ = -1;
  std::string baseURL_;
  std::unique_ptr<httplib::Client> client_;
};

}  // namespace vantorium::soak
