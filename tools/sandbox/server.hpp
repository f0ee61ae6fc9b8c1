#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace vantorium::sandbox {

/// Where and what a sandbox serves.
struct Options {
  int port = 0;                          ///< 0: the system picks a free one.
  bool tls = false;                      ///< https with a certificate made at start.
  std::filesystem::path catalogue = {};  ///< Answers and files; empty: those that come with the sandbox.
  std::filesystem::path log = {};        ///< JSON-lines file, replaced at start; empty: none.
  std::string host = "127.0.0.1";        ///< Address to listen on; keep it a loopback one.
  std::uint64_t seed = 1;                ///< Of what the catalogue leaves to chance.
  /// Called with every request and event as it is recorded, on the thread that serves it; may be empty.
  std::function<void(const nlohmann::json&)> onRecord = {};
};

/// A complete local ad service: the program `vantorium-sandbox` is this class, and tests run it in-process.
///
/// Every method may be called on any thread, between construction and destruction and while requests are
/// served. Answers set by the `set…` methods hold for requests that arrive afterwards, until the next call of
/// the same method. The newest 10,000 requests and 10,000 events are kept in memory; the log file keeps all.
class Server {
 public:
  /// Reads the catalogue. Throws std::runtime_error naming the file (and the position in it) when one is
  /// missing or malformed, or when the log cannot be written. Nothing listens yet.
  explicit Server(Options options);
  ~Server();  ///< Stops.
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  /// Returns once connections are accepted. Throws std::runtime_error when the port is taken or cannot be
  /// bound. A server that was stopped stays stopped: make another.
  void start();

  /// Ends every connection, whatever it is doing (a fault that never answers too), and returns when no thread
  /// of the server is left. Calling it again, or without start(), does nothing.
  void stop();

  /// "http://127.0.0.1:PORT" or "https://…", without a trailing slash; empty before start().
  std::string baseURL() const;

  /// The self-signed certificate (valid for the host, 127.0.0.1 and localhost) that a client has to trust;
  /// empty without TLS and before start().
  std::string certificatePEM() const;

  /// Sets faults (see docs of POST /sandbox/faults in README.md): one object or a list, replacing those set
  /// before. Throws std::invalid_argument, and changes nothing, when a name or a parameter is unknown or
  /// wrong.
  void setFaults(const nlohmann::json& faults);
  void clearFaults();
  /// Ends every connection and lets nobody connect for so long. Returns at once.
  void beginOutage(std::chrono::milliseconds length);

  /// Copies of what was recorded, oldest first. A request is recorded when it arrives, before its answer is
  /// sent:
  /// {"type":"request", "number", "time", "method", "target" (as on the wire), "path" (decoded), "headers"
  /// (object),
  ///  "body" (parsed when it is JSON, text otherwise, null without), "status" (null when none is sent),
  ///  "violations" (list of texts), "fault" (name, when one was applied)}.
  nlohmann::json requests() const;
  /// {"type":"event", "number", "time", "kind" ("impression", "started", "finished", "click"), "impression",
  ///  "placement", "query" (object, decoded), "count" (how many of this kind this impression has had by
  ///  now)}.
  nlohmann::json events() const;

  /// Waits for a recorded request, earlier ones included, that satisfies the predicate; nullopt after the
  /// timeout or when the server stops. The predicate is called on the calling thread, with no lock held.
  std::optional<nlohmann::json> waitForRequest(
      const std::function<bool(const nlohmann::json&)>& predicate,
      std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;

  /// Forgets requests, events, impressions and faults. Tokens and answers set by tests stay.
  void reset();

  // In all answers below "{{base}}" stands for baseURL(), and in the init answer "{{session}}" for a fresh
  // token.

  /// The whole answer to POST /api/init, envelope included. Its "token", if a string, is accepted from then
  /// on.
  void setInitAnswer(nlohmann::json answer);
  /// What GET /api/campaigns may choose from for a placement: an array of campaign objects. Each one served
  /// gets a fresh "impressionId" unless it has one. Throws std::invalid_argument unless it is an array of
  /// objects.
  void setCampaigns(const std::string& placement, nlohmann::json campaigns);
  /// Any answer for an exact, decoded path; it precedes everything but /sandbox/.
  void setAnswer(const std::string& path, int status, std::string contentType, std::string body);
  /// The bare text that GET /api/canReward/ and /api/canView/ answer for a placement ("true" until set).
  void setCanReward(const std::string& placement, std::string text);
  void setCanView(const std::string& placement, std::string text);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace vantorium::sandbox
