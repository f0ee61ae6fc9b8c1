#include "platform/net/http_session.hpp"

#include <curl/curl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <cstdlib>
#include <fstream>

#include "net/http_world.hpp"
#include "platform/foundation/files.hpp"
#include "platform/net/http_error.hpp"

namespace vantorium {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using std::chrono::milliseconds;
using testing::patience;
using testing::Reply;
using testing::start;
using testing::waitFor;

using HTTPSessionTest = testing::HTTPWorld;

TEST_F(HTTPSessionTest, WhateverBodyArrivesIsTheResult) {
  server.setAnswer("/page", 500, "Text/HTML ; charset=x", "broken");
  server.setAnswer("/empty", 200, "text/plain", "");
  EXPECT_EQ(fetch("/hello").text(), "hello");
  const Reply page = fetch("/page");
  EXPECT_EQ(page.text(), "broken");
  EXPECT_EQ(page.status, 500);
  EXPECT_EQ(page.contentType, "text/html");
  EXPECT_TRUE(page.hasLeft);
  ASSERT_TRUE(fetch("/empty").body);
  EXPECT_EQ(fetch("/empty").body->size(), 0U);
  server.setFaults({{"path", "/hello"}, {"fault", "successWithStatus500"}});
  EXPECT_EQ(fetch("/hello").text(), "hello");
}

TEST_F(HTTPSessionTest, LargeBodiesLiveInAFileThatSavingMoves) {
  const std::size_t memory = HTTPLimits().spoolAbove;
  const std::string large = std::string(memory, 'a') + "b";
  server.setAnswer("/small", 200, "text/plain", large.substr(1));
  server.setAnswer("/large", 200, "text/plain", large);
  EXPECT_EQ(fetch("/small").text(), large.substr(1));
  EXPECT_FALSE(fs::exists(directory.path() / "spool"));
  {
    const Reply reply = fetch("/large");
    EXPECT_EQ(reply.text(), large);
    EXPECT_FALSE(nothingSpooled());
    EXPECT_FALSE(reply.body->write(directory.path() / "saved"));
    EXPECT_TRUE(nothingSpooled());
    std::optional<Error> error;
    EXPECT_EQ(readFile(directory.path() / "saved", error), large);
  }
  EXPECT_FALSE(fetch("/large").error);
  EXPECT_TRUE(nothingSpooled());  // dropped, and gone
}

TEST_F(HTTPSessionTest, SendsWhatItIsGivenAndNothingThatDescribesTheSender) {
  server.setAnswer("/a/../b%20c", 200, "text/plain", "kept");
  fetch("/a/../b%20c?q=/../#fragment");
  json got = lastRequest();
  EXPECT_EQ(got["target"], "/a/../b%20c?q=/../");
  for (const char* absent : {"User-Agent", "Accept-Encoding", "Content-Type", "Authorization", "Cookie"}) {
    EXPECT_FALSE(got["headers"].contains(absent)) << absent;
  }
  waitFor(start(session, {.url = url("/hello"), .method = "POST"}));
  got = lastRequest();
  EXPECT_EQ(got["method"], "POST");
  EXPECT_EQ(got["headers"].value("Content-Length", ""), "0");
  EXPECT_FALSE(got["headers"].contains("Content-Type"));
  waitFor(start(session, {.url = url("/hello"),
                          .method = "POST",
                          .headers = {{"Content-Type", "application/json"}, {"User-Agent", "Phone"}},
                          .body = R"({"key":")" + std::string(5000, 'v') + "\"}"}));
  got = lastRequest();
  EXPECT_EQ(got["headers"].value("Content-Type", ""), "application/json");
  EXPECT_EQ(got["headers"].value("User-Agent", ""), "Phone");
  EXPECT_FALSE(got["headers"].contains("Expect"));
  EXPECT_EQ(got["body"]["key"], std::string(5000, 'v'));
}

TEST_F(HTTPSessionTest, RefusesARequestThatCannotBeSent) {
  const auto refusal = [&](HTTPRequest request) {
    return waitFor(start(session, std::move(request))).code();
  };
  EXPECT_EQ(refusal({.url = ""}), CURLE_URL_MALFORMAT);
  EXPECT_EQ(refusal({.url = "example.com/x"}), CURLE_URL_MALFORMAT);
  EXPECT_EQ(refusal({.url = url("/a b")}), CURLE_URL_MALFORMAT);
  EXPECT_EQ(refusal({.url = "file:///etc/passwd"}), CURLE_UNSUPPORTED_PROTOCOL);
  EXPECT_EQ(refusal({.url = url("/hello"), .headers = {{"Authorization", "Bearer x\r\nX-Evil: 1"}}}),
            CURLE_BAD_FUNCTION_ARGUMENT);
  EXPECT_EQ(server.requests().size(), 0U);
}

TEST_F(HTTPSessionTest, FollowsRedirectsWithinBounds) {
  const auto redirect = [&](const std::string& to, int status) {
    server.setFaults({{"path", "/go"}, {"fault", "redirect"}, {"to", to}, {"status", status}});
  };
  HTTPRequest post{
      .url = url("/go"), .method = "POST", .headers = {{"Authorization", "Bearer t"}}, .body = "{}"};
  redirect("/hello", 302);
  const Reply redirected = waitFor(start(session, post));
  EXPECT_EQ(redirected.text(), "hello");
  EXPECT_EQ(redirected.status, 200);
  EXPECT_EQ(lastRequest()["method"], "GET");
  EXPECT_TRUE(lastRequest()["headers"].contains("Authorization"));
  redirect("/hello", 307);
  EXPECT_EQ(waitFor(start(session, post)).text(), "hello");
  EXPECT_EQ(lastRequest()["method"], "POST");
  EXPECT_EQ(lastRequest()["body"], json::object());

  sandbox::Server other{sandbox::Options{}};
  other.start();
  redirect(other.baseURL() + "/", 307);
  EXPECT_FALSE(waitFor(start(session, post)).error);
  EXPECT_FALSE(other.requests().back()["headers"].contains("Authorization"));

  server.setFaults({{"path", "/hello"}, {"fault", "redirectLoop"}, {"times", 16}});
  EXPECT_EQ(fetch("/hello").text(), "hello");
  for (const char* to : {"file:///etc/passwd", "ftp://127.0.0.1/x", "javascript:alert(1)"}) {
    redirect(to, 302);
    EXPECT_EQ(fetch("/go").code(), CURLE_UNSUPPORTED_PROTOCOL) << to;
  }
}

TEST_F(HTTPSessionTest, EveryHarmEndsInOneClearErrorAndTheNextCallWorks) {
  struct Case {
    json fault;
    int code;
    const char* says;
  };
  const std::vector<Case> cases{
      {{{"fault", "bodyCutShort"}, {"bytes", 2}}, CURLE_PARTIAL_FILE, "127.0.0.1 ended its answer"},
      {{{"fault", "connectionReset"}}, CURLE_RECV_ERROR, "The connection to 127.0.0.1 was lost"},
      {{{"fault", "connectionReset"}, {"afterBytes", 2}}, CURLE_RECV_ERROR, "was lost"},
      {{{"fault", "serverCloses"}}, CURLE_GOT_NOTHING, "without an answer"},
      {{{"fault", "redirectLoop"}}, CURLE_TOO_MANY_REDIRECTS, "more than 16 times"},
      {{{"fault", "endlessBody"}}, CURLE_FILESIZE_EXCEEDED, "the 100000 bytes that are accepted"},
      {{{"fault", "hugeHeaders"}}, CURLE_RECV_ERROR, "header"},
      {{{"fault", "hugeHeaders"}, {"kilobytes", 30}}, CURLE_RECV_ERROR, "the 20000 bytes accepted"},
      {{{"fault", "neverAnswers"}}, CURLE_OPERATION_TIMEDOUT, "was silent for 1 s"},
      {{{"fault", "endlessBody"}, {"blockBytes", 10}, {"seconds", 60}}, CURLE_OPERATION_TIMEDOUT, "silent"},
      {{{"fault", "delay"}, {"seconds", 60}}, CURLE_OPERATION_TIMEDOUT, "silent"},
  };
  const auto bounded = [](milliseconds idle) {
    return HTTPLimits{.idleTimeout = idle, .bodyBytes = 100'000, .headerBytes = 20'000};
  };
  HTTPSession patient(configuration(bounded(patience)));
  HTTPSession hasty(configuration(bounded(std::chrono::seconds(1))));
  for (auto one : cases) {
    // Only what is about silence is given up soon: everything else may take its time on a busy machine.
    HTTPSession& client = one.code == CURLE_OPERATION_TIMEDOUT ? hasty : patient;
    one.fault["path"] = "/hello";
    server.setFaults(one.fault);
    const Reply reply = waitFor(start(client, {.url = url("/hello?secret=1")}));
    EXPECT_EQ(reply.code(), one.code) << one.fault << reply.text();
    EXPECT_NE(reply.text().find(one.says), std::string::npos) << reply.text();
    EXPECT_EQ(reply.text().find("secret"), std::string::npos) << reply.text();
    server.clearFaults();
    EXPECT_EQ(waitFor(start(client, {.url = url("/hello")})).text(), "hello") << one.fault;
  }
  EXPECT_TRUE(nothingSpooled());
}

TEST_F(HTTPSessionTest, SendsAgainOnlyWhatMayArriveTwice) {
  for (const char* fault : {"serverCloses", "connectionReset"}) {
    server.clearFaults();
    ASSERT_EQ(fetch("/hello").text(), "hello");  // leaves a connection to be reused
    server.reset();
    server.setFaults({{"path", "/hello"}, {"fault", fault}, {"times", 1}});
    const Reply reply = waitFor(start(session, {.url = url("/hello"), .method = "POST"}));
    EXPECT_TRUE(reply.error) << fault;
    EXPECT_EQ(server.requests().size(), 1U) << fault;
  }
}

TEST_F(HTTPSessionTest, ASteadyTrickleNeverTimesOut) {
  HTTPSession bounded(configuration({.idleTimeout = milliseconds(1000),
                                     .slowBytesPerSecond = 10,
                                     .slowFor = milliseconds(1000),
                                     .bodyBytes = 150}));
  server.setFaults({{"path", "/hello"}, {"fault", "endlessBody"}, {"blockBytes", 10}, {"seconds", 0.1}});
  EXPECT_EQ(waitFor(start(bounded, {.url = url("/hello")})).code(), CURLE_FILESIZE_EXCEEDED);
}

TEST_F(HTTPSessionTest, EndsWhatIsTooSlowAndWhatTakesTooLong) {
  server.setFaults({{"path", "/hello"}, {"fault", "endlessBody"}, {"blockBytes", 10}, {"seconds", 0.05}});
  const milliseconds brief(300);
  HTTPSession hasty(configuration({.idleTimeout = patience, .slowBytesPerSecond = 10'000, .slowFor = brief}));
  const Reply slow = waitFor(start(hasty, {.url = url("/hello?secret=1")}));
  EXPECT_EQ(slow.code(), CURLE_OPERATION_TIMEDOUT);
  EXPECT_EQ(slow.text().find("127.0.0.1 sent less than 10000 bytes/s for 0.3 s. Check"), 0U) << slow.text();
  EXPECT_EQ(slow.text().find("secret"), std::string::npos);
  HTTPSession bounded(configuration({.idleTimeout = patience, .slowBytesPerSecond = 0, .longest = brief}));
  const Reply old = waitFor(start(bounded, {.url = url("/hello")}));
  EXPECT_EQ(old.code(), CURLE_OPERATION_TIMEDOUT);
  EXPECT_NE(old.text().find("127.0.0.1 took longer than 0.3 s"), std::string::npos) << old.text();

  const HTTPLimits usual;
  EXPECT_NE(tooSlow("http://h/x", usual).errorMessage().find("1 KiB/s for 30 s"), std::string::npos);
  EXPECT_NE(tookTooLong("http://h/x", usual).errorMessage().find("10 minutes"), std::string::npos);
}

TEST_F(HTTPSessionTest, DoesNotCountTheTimeThatARequestWaitsForItsTurn) {
  server.setFaults({{"path", "/hang"}, {"fault", "neverAnswers"}});
  HTTPSession bounded(configuration({.idleTimeout = milliseconds(1000), .longest = milliseconds(1000)}));
  std::vector<std::future<Reply>> hanging;
  for (int i = 0; i < 64; ++i) hanging.push_back(start(bounded, {.url = url("/hang")}));
  EXPECT_TRUE(waitFor(start(bounded, {.url = url("/hello")})).hasLeft);
  for (auto& reply : hanging) EXPECT_EQ(waitFor(std::move(reply)).code(), CURLE_OPERATION_TIMEDOUT);
}

TEST_F(HTTPSessionTest, ABodyOfExactlyTheBoundIsAccepted) {
  server.setAnswer("/exact", 200, "text/plain", std::string(1000, 'x'));
  server.setAnswer("/over", 200, "text/plain", std::string(1001, 'x'));
  HTTPSession bounded(configuration({.bodyBytes = 1000, .spoolAbove = 10}));
  EXPECT_EQ(waitFor(start(bounded, {.url = url("/exact")})).text(), std::string(1000, 'x'));
  EXPECT_EQ(waitFor(start(bounded, {.url = url("/over")})).code(), CURLE_FILESIZE_EXCEEDED);
  EXPECT_TRUE(nothingSpooled());
}

TEST_F(HTTPSessionTest, AFailingDiskEndsTheExchangeAndLeavesNothing) {
  server.setAnswer("/large", 200, "text/plain", std::string(3'000'000, 'x'));
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit full{1'500'000, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &full);
  Reply reply = fetch("/large");
  setrlimit(RLIMIT_FSIZE, &before);
  ASSERT_TRUE(reply.error);
  EXPECT_EQ(reply.error->domain(), "posix");
  EXPECT_EQ(reply.error->code(), EFBIG);
  EXPECT_TRUE(nothingSpooled());
  EXPECT_EQ(fetch("/large").text().size(), 3'000'000U);

  std::ofstream(directory.path() / "file") << "in the way";
  HTTPSession nowhere({.spoolDirectory = directory.path() / "file" / "spool", .trustedCertificate = {}});
  reply = waitFor(start(nowhere, {.url = url("/large")}));
  ASSERT_TRUE(reply.error);
  EXPECT_EQ(reply.error->domain(), "posix");
  EXPECT_EQ(waitFor(start(nowhere, {.url = url("/hello")})).text(), "hello");
}

TEST_F(HTTPSessionTest, FiftyAtOnceAndMoreInTurn) {
  server.setFaults({{"path", "/hang"}, {"fault", "neverAnswers"}});
  std::vector<std::future<Reply>> hanging;
  for (int i = 0; i < 50; ++i) hanging.push_back(start(session, {.url = url("/hang")}));
  ASSERT_TRUE(server.waitForRequest([](const json& request) { return request["number"] == 50; }, patience));
  std::vector<std::future<Reply>> others;
  for (int i = 0; i < 200; ++i) others.push_back(start(session, {.url = url("/hello")}));
  for (auto& reply : others) EXPECT_EQ(waitFor(std::move(reply)).text(), "hello");
}

TEST_F(HTTPSessionTest, ShutdownCancelsEverythingOnceAndLetsGo) {
  server.setFaults({{"path", "/hang"}, {"fault", "neverAnswers"}});
  std::vector<std::future<Reply>> hanging;
  for (int i = 0; i < 100; ++i) hanging.push_back(start(session, {.url = url("/hang")}));
  ASSERT_TRUE(server.waitForRequest([](const json& request) { return request["number"] == 3; }, patience));
  const auto begin = std::chrono::steady_clock::now();
  session.shutdown();
  session.shutdown();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
  hanging.push_back(start(session, {.url = url("/hello")}));
  for (auto& reply : hanging) EXPECT_EQ(waitFor(std::move(reply)).code(), CURLE_ABORTED_BY_CALLBACK);
}

TEST_F(HTTPSessionTest, ACompletionMaySendAgainAndIsReleasedAfterItRan) {
  std::promise<void> released;
  const auto witness = std::shared_ptr<void>(nullptr, [&](void*) { released.set_value(); });
  std::promise<Reply> second;
  {
    auto captured = std::shared_ptr<int>(new int, [witness](int* value) { delete value; });
    session.send({.url = url("/hello")}, [&, captured = std::move(captured)](const HTTPAnswer&) {
      session.send({.url = url("/hello")}, [&](HTTPAnswer answer) { second.set_value({std::move(answer)}); });
    });
  }
  EXPECT_EQ(waitFor(second.get_future()).text(), "hello");
  EXPECT_EQ(witness.use_count(), 1);  // the first completion had gone before the second ran
}

TEST_F(HTTPSessionTest, VerifiesCertificatesAndTrustsTheOneGiven) {
  sandbox::Server secure{sandbox::Options{.tls = true}};
  secure.start();
  const HTTPRequest request{.url = secure.baseURL() + "/nowhere"};
  const Reply refused = waitFor(start(session, request));
  EXPECT_EQ(refused.code(), CURLE_PEER_FAILED_VERIFICATION);
  EXPECT_NE(refused.text().find("certificate of 127.0.0.1 is not trusted"), std::string::npos);

  auto trusting = configuration();
  trusting.trustedCertificate = directory.path() / "certificate.pem";
  EXPECT_EQ(waitFor(start(*std::make_unique<HTTPSession>(trusting), request)).code(),
            CURLE_SSL_CACERT_BADFILE);
  ASSERT_FALSE(writeFileAtomically(trusting.trustedCertificate, secure.certificatePEM()));
  HTTPSession trustful(trusting);
  EXPECT_TRUE(waitFor(start(trustful, request)).body);
}

TEST_F(HTTPSessionTest, SpeaksToThisMachineWithoutAProxy) {
  setenv("http_proxy", "http://127.0.0.1:1", 1);
  HTTPSession proxied(configuration());
  const Reply reply = waitFor(start(proxied, {.url = url("/hello")}));
  unsetenv("http_proxy");
  EXPECT_EQ(reply.text(), "hello");
}

struct Service {
  Service() {
    server.start();
    server.setFaults({{"path", "/hang"}, {"fault", "neverAnswers"}});
    writeFileAtomically(directory.path() / "certificate.pem", server.certificatePEM());
    setenv("VANTORIUM_TEST_SERVICE", server.baseURL().c_str(), 1);
    setenv("VANTORIUM_TEST_DIRECTORY", directory.path().c_str(), 1);
  }
  ~Service() { unsetenv("VANTORIUM_TEST_SERVICE"); }

  const testing::TemporaryDirectory directory;
  sandbox::Server server{sandbox::Options{.tls = true}};
};

TEST(HTTPSessionDeathTest, AProcessThatExitsWhileRequestsRunEndsInOrder) {
  // The process that exits is a new one, which runs this test up to EXPECT_EXIT; the service stays in this
  // one.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  std::optional<Service> service;
  if (getenv("VANTORIUM_TEST_SERVICE") == nullptr) service.emplace();
  const auto exitWhileBusy = [] {
    const fs::path directory = getenv("VANTORIUM_TEST_DIRECTORY");
    const std::string url = getenv("VANTORIUM_TEST_SERVICE");
    static auto* const session = new HTTPSession(
        {.spoolDirectory = directory / "spool", .trustedCertificate = directory / "certificate.pem"});
    for (int i = 0; i < 10; ++i) session->send({.url = url + "/hang"}, [](const HTTPAnswer&) {});
    if (waitFor(start(*session, {.url = url + "/"})).body) std::exit(7);
  };
  EXPECT_EXIT(exitWhileBusy(), ::testing::ExitedWithCode(7), "");
}

TEST_F(HTTPSessionTest, CancelsOneExchangeAndNoOther) {
  server.setFaults({{{"path", "/silent"}, {"fault", "neverAnswers"}}});
  // More than are under way at a time: the last waits for its turn.
  std::vector<std::uint64_t> ids;
  std::vector<std::future<Reply>> replies;
  for (int number = 0; number < 65; ++number) {
    auto promise = std::make_shared<std::promise<Reply>>();
    replies.push_back(promise->get_future());
    HTTPRequest request;
    request.url = server.baseURL() + "/silent";
    ids.push_back(session.send(std::move(request),
                               [promise](HTTPAnswer answer) { promise->set_value({std::move(answer)}); }));
  }
  for (const std::size_t index : {std::size_t{64}, std::size_t{0}}) {
    session.cancel(ids[index]);
    EXPECT_EQ(waitFor(std::move(replies[index])).code(), CURLE_ABORTED_BY_CALLBACK);
  }
  session.cancel(ids[0]);
  session.cancel(12345);
  HTTPRequest hello;
  hello.url = server.baseURL() + "/hello";
  const std::uint64_t last = session.send(hello, nullptr);
  EXPECT_EQ(waitFor(start(session, hello)).text(), "hello");
  session.cancel(last);
  EXPECT_EQ(replies[1].wait_for(milliseconds(0)), std::future_status::timeout);
  session.shutdown();
  EXPECT_EQ(waitFor(std::move(replies[1])).code(), CURLE_ABORTED_BY_CALLBACK);
}

TEST_F(HTTPSessionTest, HoldsARequestToItsOwnBound) {
  HTTPRequest request;
  request.url = server.baseURL() + "/hello";
  request.mostBodyBytes = 5;
  EXPECT_EQ(waitFor(start(session, request)).text(), "hello");
  request.mostBodyBytes = 4;
  EXPECT_EQ(waitFor(start(session, request)).code(), CURLE_FILESIZE_EXCEEDED);
}

}  // namespace
}  // namespace vantorium
