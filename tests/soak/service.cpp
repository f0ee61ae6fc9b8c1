#include "soak/service.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <httplib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>
#include <thread>
#include <vector>

namespace vantorium::soak {

namespace {

/// Starts the program with its standard output in `output`. Between fork and exec only what a process of many
/// threads may do there.
pid_t start(std::vector<std::string> words, int output) {
  std::vector<char*> arguments;
  for (auto& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  const pid_t parent = ::getpid();
  const pid_t child = ::fork();
  if (child != 0) return child;
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (::getppid() != parent) ::_exit(1);
  ::dup2(output, STDOUT_FILENO);
  ::execv(arguments.front(), arguments.data());
  ::_exit(127);
}

std::string readLine(int descriptor) {
  std::string line;
  for (char each = 0; ::read(descriptor, &each, 1) == 1 && each != '\n';) line.push_back(each);
  return line;
}

}  // namespace

Service::Service(const Options& options) {
  std::array<int, 2> pipe{};
  if (::pipe2(pipe.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe to the ad service can be made");
  process_ = start(
      {options.sandbox, "--catalogue", options.catalogue, "--seed", std::to_string(options.seed)}, pipe[1]);
  ::close(pipe[1]);
  baseURL_ = readLine(pipe[0]);
  ::close(pipe[0]);
  if (baseURL_.empty())
    throw std::runtime_error(fmt::format("the ad service {} did not start", options.sandbox.string()));
  client_ = std::make_unique<httplib::Client>(baseURL_);
  client_->set_keep_alive(true);
  client_->set_tcp_nodelay(true);
  client_->set_read_timeout(60);
}

Service::~Service() {
  client_.reset();
  if (process_ <= 0) return;
  ::kill(process_, SIGTERM);
  ::waitpid(process_, nullptr, 0);
}

// Nobody can connect in an outage, which ends by itself.
nlohmann::json Service::post(const std::string& path, const nlohmann::json& body) {
  constexpr int patience = 3000;  // tries of 10 milliseconds
  auto answer = client_->Post(path, body.dump(), "application/json");
  for (int tries = 1; !answer && tries < patience; ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    answer = client_->Post(path, body.dump(), "application/json");
  }
  if (!answer)
    throw std::runtime_error("the ad service does not answer: " + httplib::to_string(answer.error()));
  if (answer->status != 200)
    throw std::runtime_error("the ad service refused " + body.dump() + ": " + answer->body);
  return nlohmann::json::parse(answer->body);
}

void Service::beginOutage(double seconds) {
  post("/sandbox/outage", {{"seconds", seconds}});
  constexpr int patience = 100;  // tries: a machine that is busy may miss all of the outage
  for (int tries = 0; tries < patience; ++tries) {
    if (httplib::Client(baseURL_).Get("/sandbox/tally").error() == httplib::Error::Connection) return;
  }
}

void Service::setFaults(const nlohmann::json& faults) { post("/sandbox/faults", faults); }

nlohmann::json Service::tally(const nlohmann::json& impressions) {
  return post("/sandbox/tally", {{"impressions", impressions}});
}

}  // namespace vantorium::soak
