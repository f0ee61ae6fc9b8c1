#pragma once

#include <httplib.h>

#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <string_view>

namespace vantorium::sandbox {

/// One accepted socket, plain or TLS, as httplib reads and writes it. Owns the socket. Used on one thread
/// only; another thread may shut the socket down, which ends every wait here.
class Connection final : public httplib::Stream {
 public:
  Connection(int socket, SSL_CTX* tls);  // tls: null for plain
  ~Connection() override;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  bool handshake();
  /// True when bytes of a next request are there; false when none came in time or the peer is gone.
  bool waitForRequest(std::chrono::milliseconds timeout);
  /// Waits for the peer (or our own server) to hang up; false when the time was over first.
  bool waitForHangup(std::optional<std::chrono::milliseconds> timeout);
  bool writeAll(std::string_view bytes);

  /// Says goodbye to a TLS peer. Call it while another thread can still shut the socket down: it may have to
  /// wait.
  void close();

  /// From here on nothing reaches the peer: what httplib still writes is refused, and it ends the connection.
  void abandon() { abandoned_ = true; }
  /// As abandon(), and the peer gets a reset instead of an orderly close.
  void abandonWithReset();

  bool is_readable() const override { return true; }
  bool is_writable() const override { return !abandoned_; }
  ssize_t read(char* data, size_t size) override;
  ssize_t write(const char* data, size_t size) override;
  void get_remote_ip_and_port(std::string& ip, int& port) const override;
  void get_local_ip_and_port(std::string& ip, int& port) const override;
  socket_t socket() const override { return socket_; }

 private:
  ssize_t receive(char* data, size_t size);

  int socket_;
  std::unique_ptr<SSL, decltype(&SSL_free)> tls_;
  bool abandoned_ = false;
  std::array<char, 8192> buffer_;  // httplib reads header lines byte by byte
  size_t begin_ = 0;
  size_t end_ = 0;
};

}  // namespace vantorium::sandbox
