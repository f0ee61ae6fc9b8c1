#pragma once

#include <functional>
#include <memory>
#include <string>

#include "sandbox/http/certificate.hpp"
#include "sandbox/http/connection.hpp"

namespace vantorium::sandbox {

/// An HTTP/1.1 server: httplib's parsing and writing over connections that a handler can also misuse on
/// purpose, one thread each, so that a connection that hangs for ever holds up no other.
class Listener {
 public:
  using Handler = std::function<void(const httplib::Request&, httplib::Response&, Connection&)>;

  /// The handler is called on the connections' threads, several at once, with the body already read.
  explicit Listener(Handler handler);
  ~Listener();  // stops
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  /// Returns the port. Throws std::runtime_error when it cannot be had. `identity` may be null: plain HTTP.
  int start(const std::string& host, int port, const Identity* identity);
  /// Shuts every socket down and joins every thread. Idempotent.
  void stop();
  /// Shuts every socket down and refuses connections until `pickUp`, which follows each call of this.
  void hangUp();
  void pickUp();

 private:
  class Engine;
  std::unique_ptr<Engine> engine_;
};

}  // namespace vantorium::sandbox
