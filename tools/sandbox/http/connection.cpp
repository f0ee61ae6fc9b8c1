#include "sandbox/http/connection.hpp"

#include <arpa/inet.h>
#include <openssl/err.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace vantorium::sandbox {
namespace {

// A peer that stalls in the middle of a request or of an answer is given up after this long.
constexpr timeval stallLimit{120, 0};

int pollFor(int socket, short events, int milliseconds) {
  pollfd entry{socket, events, 0};
  int ready = 0;
  do {
    ready = ::poll(&entry, 1, milliseconds);
  } while (ready < 0 && errno == EINTR);
  return ready;
}

void addressOf(int socket, int (*query)(int, sockaddr*, socklen_t*), std::string& ip, int& port) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  std::array<char, INET_ADDRSTRLEN> text{};
  if (query(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0 || address.sin_family != AF_INET)
    return;
  if (inet_ntop(AF_INET, &address.sin_addr, text.data(), text.size()) == nullptr) return;
  ip = text.data();
  port = ntohs(address.sin_port);
}

}  // namespace

Connection::Connection(int socket, SSL_CTX* tls)
    : socket_(socket), tls_(tls != nullptr ? SSL_new(tls) : nullptr, &SSL_free) {
  ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &stallLimit, sizeof stallLimit);
  ::setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &stallLimit, sizeof stallLimit);
  if (tls_) SSL_set_fd(tls_.get(), socket_);
}

Connection::~Connection() {
  tls_.reset();
  ERR_clear_error();
  ::close(socket_);
}

void Connection::close() {
  if (tls_ && !abandoned_) SSL_shutdown(tls_.get());
}

bool Connection::handshake() { return !tls_ || SSL_accept(tls_.get()) == 1; }

bool Connection::waitForRequest(std::chrono::milliseconds timeout) {
  if (begin_ < end_ || (tls_ && SSL_pending(tls_.get()) > 0)) return true;
  return pollFor(socket_, POLLIN, static_cast<int>(timeout.count())) > 0;
}

bool Connection::waitForHangup(std::optional<std::chrono::milliseconds> timeout) {
  return pollFor(socket_, POLLRDHUP, timeout ? static_cast<int>(timeout->count()) : -1) > 0;
}

void Connection::abandonWithReset() {
  abandoned_ = true;
  const linger atOnce{1, 0};
  ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

bool Connection::writeAll(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(bytes.data(), bytes.size());
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

ssize_t Connection::read(char* data, size_t size) {
  if (begin_ == end_) {
    if (size >= buffer_.size()) return receive(data, size);
    const ssize_t received = receive(buffer_.data(), buffer_.size());
    if (received <= 0) return received;
    begin_ = 0;
    end_ = static_cast<size_t>(received);
  }
  const size_t count = std::min(size, end_ - begin_);
  std::memcpy(data, buffer_.data() + begin_, count);
  begin_ += count;
  return static_cast<ssize_t>(count);
}

ssize_t Connection::receive(char* data, size_t size) {
  if (tls_) return SSL_read(tls_.get(), data, static_cast<int>(std::min<size_t>(size, INT32_MAX)));
  ssize_t received = 0;
  do {
    received = ::recv(socket_, data, size, 0);
  } while (received < 0 && errno == EINTR);
  return received;
}

ssize_t Connection::write(const char* data, size_t size) {
  if (abandoned_) return -1;
  if (tls_) return SSL_write(tls_.get(), data, static_cast<int>(std::min<size_t>(size, INT32_MAX)));
  ssize_t sent = 0;
  do {
    sent = ::send(socket_, data, size, MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  return sent;
}

void Connection::get_remote_ip_and_port(std::string& ip, int& port) const {
  addressOf(socket_, &::getpeername, ip, port);
}

void Connection::get_local_ip_and_port(std::string& ip, int& port) const {
  addressOf(socket_, &::getsockname, ip, port);
}

}  // namespace vantorium::sandbox
