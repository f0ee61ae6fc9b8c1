// The local ad service as a server: its faults, its files, its end, and what it refuses.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <thread>

#include "sandbox/wire_client.hpp"

namespace vantorium::sandbox {
namespace {

using namespace wire;

TEST_F(SandboxServerTest, FilesOutsideTheCatalogueStayThere) {
  for (const char* path :
       {"/static/../init.json", "/static/%2e%2e/%2e%2e/main.cpp", "/init.json", "/media/%00"}) {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);  // raw: curl tidies such paths up
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const std::string url = server.baseURL();
    address.sin_port = htons(static_cast<uint16_t>(std::stoi(url.substr(url.rfind(':') + 1))));
    ASSERT_EQ(::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    const std::string request =
        std::string("GET ") + path + " HTTP/1.1\r\nHost: h\r\nConnection: close\r\n\r\n";
    ASSERT_EQ(::send(fd, request.data(), request.size(), MSG_NOSIGNAL), static_cast<ssize_t>(request.size()));
    std::array<char, 16> head{};
    ::recv(fd, head.data(), 12, MSG_WAITALL);
    ::close(fd);
    EXPECT_EQ(std::string(head.data()).substr(0, 10), "HTTP/1.1 4") << path;
  }
}

TEST_F(SandboxServerTest, EveryFaultDoesItsHarm) {
  const auto strike = [&](const char* name, json parameters = json::object()) {
    parameters["path"] = "/api/canView/";
    parameters["fault"] = name;
    parameters["times"] = 1;
    server.setFaults(parameters);
    return send({server.baseURL() + "/api/canView/p", {bearer()}});
  };
  EXPECT_EQ(strike("noFill").body, "false");
  EXPECT_EQ(strike("serviceError", {{"text", "Closed."}}).parsed()["error"], "Closed.");
  EXPECT_TRUE(strike("notJSON").parsed().is_discarded());
  EXPECT_EQ(strike("wrongTypes").parsed()["status"], true);
  EXPECT_EQ(strike("successWithStatus500").status, 500);
  EXPECT_EQ(strike("delay", {{"seconds", 0.01}}).body, "true");
  EXPECT_EQ(strike("bodyCutShort").code, CURLE_PARTIAL_FILE);
  EXPECT_EQ(strike("bodyTruncated", {{"bytes", 3}}).body, "tru");
  EXPECT_EQ(strike("connectionReset").code, CURLE_RECV_ERROR);
  EXPECT_EQ(strike("connectionReset", {{"afterBytes", 2}}).body, "tr");
  EXPECT_EQ(strike("serverCloses").code, CURLE_GOT_NOTHING);
  EXPECT_EQ(strike("redirectLoop").status, 302);
  EXPECT_EQ(strike("redirect", {{"to", "file:///etc/hostname"}}).status, 302);
  EXPECT_EQ(strike("emptyBody").body, "");
  EXPECT_NE(strike("hugeHeaders").code, CURLE_OK) << "curl's own bound";
  EXPECT_EQ(strike("deepJSON", {{"depth", 1000}}).body.size(), 2028U);
  EXPECT_EQ(strike("notFound").status, 404);
  EXPECT_EQ(strike("status").status, 503);
  EXPECT_EQ(strike("status", {{"status", 204}}).body, "");
  EXPECT_EQ(send({server.baseURL() + "/api/canView/p", {bearer()}}).body, "true") << "once only";

  server.setFaults({{{"path", "/api/init"}, {"fault", "wrongTypes"}, {"where", "fields"}}});
  const json wrong = init().parsed();
  EXPECT_EQ(wrong["status"], "success");
  EXPECT_TRUE(wrong["token"].is_number());
  EXPECT_TRUE(wrong["placements"][0]["id"].is_number());

  for (const json& nonsense : {json{{"path", "/"}, {"fault", "nonsense"}}, json{{"fault", "noFill"}},
                               json{{"path", "/"}, {"fault", "delay"}, {"seconds", "1"}},
                               json{{"path", "/"}, {"fault", "noFill"}, {"colour", 1}}}) {
    EXPECT_THROW(server.setFaults(nonsense), std::invalid_argument) << nonsense;
    EXPECT_EQ(
        send({server.baseURL() + "/sandbox/faults", {"Content-Type: application/json"}, nonsense.dump()})
            .status,
        400);
  }
}

TEST_F(SandboxServerTest, StopsAtOnceWhateverIsGoingOn) {
  server.setFaults(json::array({{{"path", "/silent"}, {"fault", "neverAnswers"}},
                                {{"path", "/endless"}, {"fault", "endlessBody"}, {"seconds", 0.001}},
                                {{"path", "/late"}, {"fault", "delay"}, {"seconds", 3600}}}));
  std::vector<std::thread> clients;
  for (const char* path : {"/silent", "/endless", "/late"}) {
    clients.emplace_back([this, path] {
      EXPECT_NE(send({server.baseURL() + path, {}, {}, 300}).code, CURLE_OK);
    });
    EXPECT_TRUE(server.waitForRequest([&](const json& request) { return request["path"] == path; }));
  }
  std::thread waiting([this] {
    EXPECT_FALSE(server.waitForRequest([](const json&) { return false; }, std::chrono::hours(1)));
  });
  server.stop();
  server.stop();
  for (auto& client : clients) client.join();
  waiting.join();
}

TEST(SandboxTest, TLSIsTrustedOnlyByItsCertificate) {
  Server server(Options{.tls = true});
  server.start();
  server.setAnswer("/hello", 200, "text/plain", "hello");
  const std::string url = server.baseURL() + "/hello";
  EXPECT_EQ(send({.url = url, .certificates = server.certificatePEM()}).body, "hello");
  EXPECT_EQ(send({.url = url}).code, CURLE_PEER_FAILED_VERIFICATION);
  server.setFaults({{"path", "/"}, {"fault", "bodyCutShort"}});
  EXPECT_NE(send({.url = url, .certificates = server.certificatePEM()}).code, CURLE_OK);
}

TEST(SandboxTest, RefusesWhatItCannotServe) {
  Server server{Options{}};
  server.start();
  const std::string url = server.baseURL();
  Server second(Options{.port = std::stoi(url.substr(url.rfind(':') + 1))});
  EXPECT_THROW(second.start(), std::runtime_error);
  EXPECT_THROW(Server(Options{.catalogue = "no-such-folder"}), std::runtime_error);

  const auto folder = std::filesystem::path(testing::TempDir()) / "vantorium-sandbox-malformed";
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "init.json") << "{\n  \"status\": oops\n}";
  try {
    Server malformed(Options{.catalogue = folder});
    FAIL() << "accepted";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("init.json: parse error at line 2"), std::string::npos)
        << error.what();
  }
  std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace vantorium::sandbox
