// What the machine may lack, and what was sent all the same.
#include <arpa/inet.h>
#include <curl/curl.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <set>
#include <thread>

#include "net/http_world.hpp"
#include "platform/foundation/file_descriptor.hpp"

namespace vantorium {
namespace {

namespace fs = std::filesystem;

/// A port of this machine where connections are refused until `serve`.
class RawServer {
 public:
  RawServer() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(::bind(socket_.get(), generic, length), 0);
    EXPECT_EQ(::getsockname(socket_.get(), generic, &length), 0);
    url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
  }
  ~RawServer() {
    if (thread_.joinable()) thread_.join();
  }

  /// Reads so many requests of one connection, answers all but the last, and hangs up.
  void serve(int requests) {
    EXPECT_EQ(::listen(socket_.get(), 8), 0);
    thread_ = std::thread([this, requests] {
      const FileDescriptor connection(::accept(socket_.get(), nullptr, nullptr));
      for (int number = 0; number < requests; ++number) {
        std::string request;
        for (char byte = 0; !request.ends_with("\r\n\r\n") && ::read(connection.get(), &byte, 1) == 1;)
          request += byte;
        constexpr std::string_view answer = "HTTP/1.1 204 No Content\r\n\r\n";
        if (number + 1 == requests) break;
        EXPECT_GT(::write(connection.get(), answer.data(), answer.size()), 0);
      }
    });
  }

  std::string url;

 private:
  const FileDescriptor socket_;
  std::thread thread_;
};

/// Has the process open no more files as long as it lives.
class NoMoreFiles {
 public:
  NoMoreFiles() {
    getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit none{0, before_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoMoreFiles() { setrlimit(RLIMIT_NOFILE, &before_); }
  NoMoreFiles(const NoMoreFiles&) = delete;
  NoMoreFiles& operator=(const NoMoreFiles&) = delete;

 private:
  rlimit before_{};
};

/// Descriptors that threads may talk through.
std::set<int> openChannels() {
  std::set<int> channels;
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    const std::string target = fs::read_symlink(entry.path(), gone).string();
    const bool isChannel = target.starts_with("socket:") || target.starts_with("pipe:") ||
                           target.starts_with("anon_inode:[eventfd]");
    if (isChannel) channels.insert(std::stoi(entry.path().filename()));
  }
  return channels;
}

using HTTPShortageTest = testing::HTTPWorld;
using testing::Reply;
using testing::start;
using testing::waitFor;

TEST_F(HTTPShortageTest, KnowsWhetherARequestMayHaveLeft) {
  RawServer other;
  const HTTPRequest get{.url = other.url};
  const HTTPRequest post{.url = other.url, .method = "POST"};
  for (const HTTPRequest& request : {get, post}) {
    const Reply refused = waitFor(start(session, request));
    EXPECT_EQ(refused.code(), CURLE_COULDNT_CONNECT);
    EXPECT_FALSE(refused.hasLeft);
    EXPECT_EQ(refused.status, 0);
  }
  other.serve(2);
  EXPECT_EQ(waitFor(start(session, get)).status, 204);
  // The connection is kept, and hung up only when the request has been read.
  const Reply lost = waitFor(start(session, post));
  EXPECT_EQ(lost.code(), CURLE_RECV_ERROR) << lost.text();
  EXPECT_TRUE(lost.hasLeft);
  EXPECT_EQ(lost.status, 0);

  EXPECT_FALSE(waitFor(start(session, {.url = "nowhere"})).hasLeft);
}

TEST_F(HTTPShortageTest, AProcessWithoutDescriptorsFailsInWordsAndTriesAgain) {
  HTTPSession fresh(configuration({}));
  const auto refusal = [&] {
    const NoMoreFiles shortage;
    return waitFor(start(fresh, {.url = url("/hello")}));
  };
  for (int round = 0; round < 2; ++round) {  // before there is a network thread, and with one
    const Reply reply = refusal();
    ASSERT_TRUE(reply.error);
    EXPECT_EQ(reply.error->domain(), "posix");
    EXPECT_EQ(reply.error->code(), EMFILE);
    EXPECT_NE(reply.text().find("Too many open files"), std::string::npos) << reply.text();
    EXPECT_FALSE(reply.hasLeft);
    server.setFaults({{"path", "/hello"}, {"fault", "serverCloses"}});
    waitFor(start(fresh, {.url = url("/hello")}));  // works, and leaves no connection behind
    server.clearFaults();
  }
  EXPECT_EQ(waitFor(start(fresh, {.url = url("/hello")})).text(), "hello");
}

TEST_F(HTTPShortageTest, ARequestIsNotLeftWithAThreadThatCannotBeWoken) {
  const auto before = openChannels();
  HTTPSession deaf(configuration({}));
  waitFor(start(deaf, {.url = RawServer().url}));
  const FileDescriptor readOnly(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  std::vector<std::pair<int, int>> saved;
  for (const int channel : openChannels()) {
    if (before.contains(channel)) continue;
    saved.emplace_back(channel, ::dup(channel));
    ::dup2(readOnly.get(), channel);
  }
  ASSERT_FALSE(saved.empty());
  const Reply reply = waitFor(start(deaf, {.url = url("/hello")}));
  for (const auto& [channel, original] : saved) {
    ::dup2(original, channel);
    ::close(original);
  }
  ASSERT_TRUE(reply.error);
  EXPECT_EQ(reply.error->domain(), "posix");
  EXPECT_FALSE(reply.hasLeft);
  EXPECT_EQ(waitFor(start(deaf, {.url = url("/hello")})).text(), "hello");
}

TEST_F(HTTPShortageTest, ANetworkThreadThatEndsLosesNoRequest) {
  HTTPSession brief(configuration({.connectionsKeptFor = std::chrono::milliseconds(0)}));
  for (int round = 0; round < 100; ++round) {
    EXPECT_EQ(waitFor(start(brief, {.url = url("/hello")})).text(), "hello");
  }
}

}  // namespace
}  // namespace vantorium
