#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <mutex>

#include "sandbox/server.hpp"

namespace {

using vantorium::sandbox::Options;
using vantorium::sandbox::Server;

constexpr int usageError = 2;

void printRecord(const nlohmann::json& record) {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  if (record["type"] == "event") {
    fmt::print(stderr, "  {} of {} for {}\n", record["kind"].get<std::string>(),
               record["impression"].get<std::string>(), record["placement"].get<std::string>());
    return;
  }
  fmt::print(stderr, "{} {} {}", record["status"].is_null() ? "---" : record["status"].dump(),
             record["method"].get<std::string>(), record["target"].get<std::string>());
  if (record.contains("fault")) fmt::print(stderr, " [{}]", record["fault"].get<std::string>());
  fmt::print(stderr, "\n");
  for (const auto& violation : record["violations"])
    fmt::print(stderr, "  ! {}\n", violation.get<std::string>());
}

sigset_t endingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  return signals;
}

void run(const Options& options, const std::string& certificateFile) {
  // Blocked before any thread exists, so that only sigwait below ever sees them.
  const sigset_t signals = endingSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  Server server(options);
  server.start();
  if (!certificateFile.empty()) {
    std::ofstream file(certificateFile);
    if (!(file << server.certificatePEM() << std::flush)) {
      throw std::runtime_error(fmt::format("cannot write the certificate to {}", certificateFile));
    }
  }
  fmt::print("{}\n", server.baseURL());
  std::fflush(stdout);
  int signal = 0;
  sigwait(&signals, &signal);
  server.stop();
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"A local ad service. It prints its base URL and serves until SIGINT or SIGTERM.",
               "vantorium-sandbox"};
  Options options;
  std::string certificateFile;
  bool verbose = false;
  app.set_version_flag("--version", "vantorium-sandbox " VANTORIUM_SANDBOX_VERSION);
  app.add_option("--port", options.port, "Port on 127.0.0.1; 0 takes a free one")
      ->check(CLI::Range(0, 65535));
  const auto* tls = app.add_flag("--tls", options.tls, "Serve https with a certificate made at start");
  app.add_option("--cert-out", certificateFile, "Write that certificate (PEM) to this file")->needs("--tls");
  app.add_option("--catalogue", options.catalogue, "Folder of answers and files to serve");
  app.add_option("--log", options.log, "Write every request and event to this file, as JSON lines");
  app.add_option("--seed", options.seed, "Number that decides what the catalogue leaves to chance");
  app.add_flag("--verbose", verbose, "Print every request and event on standard error");
  static_cast<void>(tls);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : usageError;
  }
  if (verbose) options.onRecord = &printRecord;
  try {
    run(options, certificateFile);
  } catch (const std::exception& error) {
    fmt::print(stderr, "vantorium-sandbox: {}\n", error.what());
    return usageError;
  }
  return 0;
}
