#include "sandbox/http/listener.hpp"

#include <fmt/format.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <list>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <unordered_set>
#include <utility>

namespace vantorium::sandbox {
namespace {

constexpr auto keepAlive = std::chrono::seconds(30);
constexpr size_t requestsPerConnection = 1000;
constexpr size_t largestRequestBody = 1U << 20U;

// httplib ignores SIGPIPE for the whole process, which would hide from a test that its own client does not
// cope with it. Ours stays as it was; the connections' threads block the signal instead.
void keepingSIGPIPE(const std::function<void()>& work) {
  struct sigaction before {};
  sigaction(SIGPIPE, nullptr, &before);
  work();
  sigaction(SIGPIPE, &before, nullptr);
}

void blockSIGPIPE() {
  sigset_t pipe;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
}

/// A socket that keeps an address for us without listening there; -1 when another has it.
int boundSocket(const sockaddr* address, socklen_t length) {
  const int made = ::socket(address->sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int on = 1;
  ::setsockopt(made, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (::bind(made, address, length) == 0) return made;
  ::close(made);
  return -1;
}

/// httplib's task queue with one thread for each connection. Used by the accepting thread only.
class ThreadPerConnection final : public httplib::TaskQueue {
 public:
  void enqueue(std::function<void()> work) override {
    workers_.remove_if([](Worker& worker) {
      if (!worker.finished) return false;
      worker.thread.join();
      return true;
    });
    auto& worker = workers_.emplace_back();
    worker.thread = std::thread([&worker, work = std::move(work)] {
      blockSIGPIPE();
      work();
      worker.finished = true;
    });
  }

  void shutdown() override {
    for (auto& worker : workers_) worker.thread.join();
    workers_.clear();
  }

 private:
  struct Worker {
    std::thread thread;
    std::atomic<bool> finished{false};
  };
  std::list<Worker> workers_;
};

// What httplib's handlers, which know of no connection, are serving on their thread.
thread_local Connection* currentConnection = nullptr;

}  // namespace

class Listener::Engine final : public httplib::Server {
 public:
  explicit Engine(Listener::Handler handler) : handler_(std::move(handler)) {
    new_task_queue = [] { return new ThreadPerConnection; };
    set_payload_max_length(largestRequestBody);
    set_keep_alive_timeout(keepAlive.count());
    set_keep_alive_max_count(requestsPerConnection);
    // httplib would share the port with another process that listens on it.
    set_socket_options([](socket_t socket) {
      const int on = 1;
      ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    });
    set_tcp_nodelay(true);
    routeEverything();
  }

  ~Engine() override { stopServing(); }

  int startServing(const std::string& host, int port, SSL_CTX* tls) {
    tls_ = tls;
    errno = 0;
    int bound = port;
    if (port == 0) {
      bound = bind_to_any_port(host);
    } else if (!bind_to_port(host, port)) {
      bound = -1;
    }
    if (bound <= 0) {
      throw std::runtime_error(fmt::format("cannot listen on {}:{}: {}", host, port, std::strerror(errno)));
    }
    ::listen(svr_sock_, SOMAXCONN);  // httplib's own queue of five drops connections of a batch of fifty
    accept();
    return bound;
  }

  void stopServing() {
    hangUp();
    if (reserve_ >= 0) ::close(std::exchange(reserve_, -1));
  }

  /// Ends every connection and refuses others.
  void hangUp() {
    std::thread acceptor;
    {
      const std::lock_guard lock(mutex_);
      stopping_ = true;
      for (const int socket : sockets_) ::shutdown(socket, SHUT_RDWR);
      acceptor = std::move(acceptor_);
    }
    if (!acceptor.joinable()) return;
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    ::getsockname(svr_sock_, reinterpret_cast<sockaddr*>(&address), &length);
    ::shutdown(svr_sock_, SHUT_RDWR);  // the accepting thread then closes it and joins the others
    reserve_ = boundSocket(reinterpret_cast<const sockaddr*>(&address), length);
    acceptor.join();
  }

  void pickUp() {
    svr_sock_ = std::exchange(reserve_, -1);
    ::listen(svr_sock_, SOMAXCONN);
    accept();
  }

 private:
  /// The lock lasts until the thread has its place: the first request may ask for an outage, which looks
  /// there.
  void accept() {
    const std::lock_guard lock(mutex_);
    stopping_ = false;
    acceptor_ = std::thread([this] { listen_after_bind(); });
  }

  bool process_and_close_socket(socket_t socket) override {
    Connection connection(socket, tls_);
    if (!enter(socket)) return false;
    currentConnection = &connection;
    if (connection.handshake()) serve(connection);
    currentConnection = nullptr;
    connection.close();
    leave(socket);
    return true;
  }

  void serve(Connection& connection) {
    bool goOn = true;
    for (size_t left = requestsPerConnection; goOn && left > 0 && connection.waitForRequest(keepAlive);
         --left) {
      bool closed = false;
      goOn = process_request(connection, left == 1, closed, nullptr) && !closed && connection.is_writable();
    }
  }

  bool enter(int socket) {
    const std::lock_guard lock(mutex_);
    if (stopping_) return false;
    sockets_.insert(socket);
    return true;
  }

  void leave(int socket) {
    const std::lock_guard lock(mutex_);
    sockets_.erase(socket);
  }

  void routeEverything() {
    const auto serveIt = [this](const httplib::Request& request, httplib::Response& response) {
      handler_(request, response, *currentConnection);
    };
    // Requests without a body are served before httplib looks for one: a POST without a length would make it
    // wait.
    set_pre_routing_handler([serveIt](const httplib::Request& request, httplib::Response& response) {
      const bool body =
          request.get_header_value<uint64_t>("Content-Length") > 0 || request.has_header("Transfer-Encoding");
      if (body && request.method != "GET" && request.method != "HEAD") return HandlerResponse::Unhandled;
      serveIt(request, response);
      return HandlerResponse::Handled;
    });
    Post(".*", serveIt);
    Put(".*", serveIt);
    Patch(".*", serveIt);
    Delete(".*", serveIt);
    set_error_handler([](const httplib::Request&, httplib::Response& response) {
      if (response.has_header("Content-Type")) return;  // an answer of ours
      response.set_content(
          fmt::format(R"({{"status":"error","error":"The request cannot be read (HTTP {})."}})",
                      response.status),
          "application/json");
    });
  }

  Listener::Handler handler_;
  SSL_CTX* tls_ = nullptr;
  int reserve_ = -1;
  std::mutex mutex_;  // guards everything below
  std::thread acceptor_;
  bool stopping_ = false;
  std::unordered_set<int> sockets_;
};

Listener::Listener(Handler handler) {
  keepingSIGPIPE([&] { engine_ = std::make_unique<Engine>(std::move(handler)); });
}

Listener::~Listener() = default;

int Listener::start(const std::string& host, int port, const Identity* identity) {
  return engine_->startServing(host, port, identity != nullptr ? identity->context() : nullptr);
}

void Listener::stop() { engine_->stopServing(); }
void Listener::hangUp() { engine_->hangUp(); }
void Listener::pickUp() { engine_->pickUp(); }

}  // namespace vantorium::sandbox
