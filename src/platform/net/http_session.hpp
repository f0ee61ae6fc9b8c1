#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <vantorium/error.hpp>

#include "platform/foundation/data.hpp"

namespace vantorium {

struct HTTPRequest {
  std::string url;
  std::string method = "GET";  ///< or "POST", which alone has a body
  /// Sent exactly as given; nothing that describes the sender is added.
  std::vector<std::pair<std::string, std::string>> headers = {};
  std::string body = {};
  /// The largest body that is of use; none for the session's own bound, which holds in any case.
  std::optional<std::uint64_t> mostBodyBytes = {};
};

/// Bounds of one exchange; what exceeds them ends as a transport error.
struct HTTPLimits {
  std::chrono::milliseconds idleTimeout{30'000};  ///< without a byte, connecting included
  /// An exchange that moves less than this on average, for as long as that, ends; 0 for any speed. The time
  /// that the server takes to begin its answer does not count.
  std::uint64_t slowBytesPerSecond = 1024;
  std::chrono::milliseconds slowFor{30'000};
  std::chrono::milliseconds longest{600'000};         ///< from its turn to the last byte
  std::uint64_t bodyBytes = 512ULL * 1024 * 1024;     ///< a body of exactly this size is accepted
  std::size_t headerBytes = std::size_t{256} * 1024;  ///< all header lines of one answer together
  int redirects = 16;
  std::size_t spoolAbove = std::size_t{256} * 1024;  ///< larger bodies live in a file
  /// For how long connections, and the network thread, are kept for a next request when all is quiet.
  std::chrono::milliseconds connectionsKeptFor{60'000};
};

/// What an exchange came to: exactly one of body and error is present.
struct HTTPAnswer {
  std::optional<Data> body = {};
  /// A transport error has the domain "curl" (its code is libcurl's) or "posix".
  std::optional<Error> error = {};
  /// That of the last answer that began, after redirects; 0 when none began.
  int status = 0;
  /// The media type as the answer names it, lower case, without parameters; empty for none.
  std::string contentType = {};
  /// Whether a byte of the request may have left this machine.
  bool hasLeft = false;
};

/// Exchanges HTTP requests, all on one network thread: connections are kept and reused, HTTP/2 is used where
/// it is offered, redirects are followed, only http and https are spoken and TLS is verified.
///
/// The status decides nothing here: whatever body arrives without a transport error is the answer's.
class HTTPSession {
 public:
  using Completion = std::function<void(HTTPAnswer answer)>;

  struct Configuration {
    /// Where large bodies are written until they are saved or dropped. Created on demand.
    std::filesystem::path spoolDirectory;
    /// PEM file of a certificate to trust besides the system's; empty for none.
    std::filesystem::path trustedCertificate = {};
    HTTPLimits limits = {};
  };

  explicit HTTPSession(Configuration configuration);
  /// As `shutdown`.
  ~HTTPSession();
  HTTPSession(const HTTPSession&) = delete;
  HTTPSession& operator=(const HTTPSession&) = delete;

  /// Sends a request. Any thread; never blocks. The completion is called once, on the session's callback
  /// queue (one at a time, never on the caller's stack).
  /// Returns the exchange's name for `cancel`.
  ///
  /// The first request starts the network thread. When there is no descriptor or no thread for it, that is
  /// the failure of this request, and the next one tries again. Throws std::bad_alloc when there is no memory
  /// for the request itself; it is then not sent and its completion not called.
  std::uint64_t send(HTTPRequest request, Completion completion);
  /// Ends the exchange with the error "curl" 42 (cancelled), unless it has ended already. Any thread. Without
  /// memory, or when the network thread cannot be woken, it may go on for a while.
  void cancel(std::uint64_t exchange);

  /// Ends every exchange under way with the error "curl" 42 (cancelled) and stops the network thread, well
  /// within a second whatever the network does. Completions still arrive on the callback queue. Later
  /// requests are cancelled at once. Any thread but the callback queue; may be called twice.
  void shutdown();

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace vantorium
