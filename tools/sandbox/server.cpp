#include "sandbox/server.hpp"

#include <fmt/format.h>

#include <mutex>

#include "sandbox/endpoints/control.hpp"
#include "sandbox/endpoints/endpoint.hpp"
#include "sandbox/endpoints/rules.hpp"
#include "sandbox/http/listener.hpp"
#include "sandbox/http/outage.hpp"
#include "sandbox/service/faults.hpp"

namespace vantorium::sandbox {
namespace {

using nlohmann::json;

std::vector<Endpoint> allEndpoints() {
  std::vector<Endpoint> all;
  for (auto family : {&sessionEndpoints, &campaignEndpoints, &nativeEndpoints, &offerEndpoints,
                      &permissionEndpoints, &impressionEndpoints, &widgetEndpoints}) {
    for (auto& endpoint : family()) all.push_back(std::move(endpoint));
  }
  return all;
}

json headersOf(const httplib::Request& request) {
  json headers = json::object();
  for (const auto& [name, value] : request.headers) {
    // httplib adds these four itself.
    if (name == "REMOTE_ADDR" || name == "REMOTE_PORT" || name == "LOCAL_ADDR" || name == "LOCAL_PORT")
      continue;
    if (headers.contains(name)) {
      headers[name] = headers[name].get<std::string>() + ", " + value;
    } else {
      headers[name] = value;
    }
  }
  return headers;
}

int statusOnTheWire(const Answer& answer, const Call& call) {
  return answer.status == 200 && !call.request.ranges.empty() ? 206 : answer.status;
}

void send(const Answer& answer, httplib::Response& response) {
  if (answer.status != 200) response.status = answer.status;  // httplib makes 200 or 206 of the rest
  for (const auto& [name, value] : answer.headers) response.set_header(name, value);
  if (answer.body.size() == 0) {
    response.set_content("", answer.contentType);
    return;
  }
  response.set_content_provider(answer.body.size(), answer.contentType,
                                [body = answer.body](size_t offset, size_t length, httplib::DataSink& sink) {
                                  constexpr size_t piece = 256U << 10U;
                                  const std::string bytes = body.read(offset, std::min(length, piece));
                                  return !bytes.empty() && sink.write(bytes.data(), bytes.size());
                                });
}

}  // namespace

struct Server::Impl {
  explicit Impl(Options given)
      : options(std::move(given)),
        catalogue(options.catalogue.empty() ? defaultCatalogue() : options.catalogue),
        journal(options.log, options.onRecord),
        variety(options.seed),
        listener([this](const auto& request, auto& response, Connection& connection) {
          serve(request, response, connection);
        }) {}

  void serve(const httplib::Request& request, httplib::Response& response, Connection& connection);
  void beginOutage(const Call& call, Connection& connection);
  Plan plan(const Call& call, const Endpoint& endpoint, const Violations& violations,
            const std::optional<Fault>& fault);
  const Endpoint& endpointFor(const Call& call) const;
  Answer trueAnswer(const Call& call, const Endpoint& endpoint, const Violations& violations);
  void record(const Call& call, const Violations& violations, const std::optional<Fault>& fault,
              const Plan& plan);

  const Options options;
  Catalogue catalogue;
  Ledger ledger;
  Journal journal;
  FaultTable faults;
  Tally tally;
  Variety variety;
  const Service service{catalogue, ledger, journal, variety};
  const std::vector<Endpoint> endpoints = allEndpoints();
  const Endpoint files = fileEndpoint();

  mutable std::mutex mutex;  // guards the next three
  std::string baseURL;
  std::optional<Identity> identity;
  bool stopped = false;

  Listener listener;  // after all of the above, which its threads use
  Outage outage{listener};
};

const Endpoint& Server::Impl::endpointFor(const Call& call) const {
  const auto found = std::find_if(endpoints.begin(), endpoints.end(),
                                  [&](const Endpoint& endpoint) { return endpoint.matches(call.path); });
  return found == endpoints.end() ? files : *found;
}

Answer Server::Impl::trueAnswer(const Call& call, const Endpoint& endpoint, const Violations& violations) {
  if (auto fixed = catalogue.fixedAnswer(call.path)) return *fixed;
  if (&endpoint == &files && call.path.starts_with("/api/")) {
    return failure(fmt::format("There is no endpoint {}.", call.path), 404);
  }
  if (!violations.empty()) return failure(fmt::format("{}", fmt::join(violations, "; ")), 400);
  return endpoint.answer(service, call);
}

Plan Server::Impl::plan(const Call& call, const Endpoint& endpoint, const Violations& violations,
                        const std::optional<Fault>& fault) {
  const auto answer = [&] { return trueAnswer(call, endpoint, violations); };
  if (!fault) return {.answer = answer()};
  return planFault(*fault, Victim{call, endpoint.noFill, answer});
}

void Server::Impl::record(const Call& call, const Violations& violations, const std::optional<Fault>& fault,
                          const Plan& plan) {
  json entry{{"method", call.request.method},
             {"target", call.request.target},
             {"path", call.path},
             {"headers", headersOf(call.request)},
             {"body", call.body},
             {"violations", violations}};
  entry["status"] = plan.answer ? json(statusOnTheWire(*plan.answer, call)) : json(nullptr);
  if (fault) entry["fault"] = fault->name;
  journal.addRequest(std::move(entry));
}

// Answers by itself and first, for then nobody is listening.
void Server::Impl::beginOutage(const Call& call, Connection& connection) {
  const json seconds = call.body.is_object() ? call.body.value("seconds", json()) : json();
  const bool isSound = call.request.method == "POST" && seconds.is_number() && seconds > 0 && seconds <= 3600;
  const Answer answer =
      isSound ? success() : failure(R"(POST an object such as {"seconds":0.5}: above 0, at most 3600)", 400);
  connection.writeAll(
      fmt::format("HTTP/1.1 {}\r\nContent-Type: {}\r\nContent-Length: {}\r\nConnection: close\r\n\r\n{}",
                  isSound ? "200 OK" : "400 Bad Request", answer.contentType, answer.body.size(),
                  answer.body.read(0, answer.body.size())));
  connection.abandon();
  if (isSound) outage.begin(std::chrono::milliseconds(static_cast<int64_t>(seconds.get<double>() * 1000)));
}

void Server::Impl::serve(const httplib::Request& request, httplib::Response& response,
                         Connection& connection) {
  Call call(request);
  if (call.path == "/sandbox/outage") {
    beginOutage(call, connection);
    return;
  }
  if (call.path.starts_with("/sandbox/")) {
    send(controlAnswer(call, {journal, ledger, faults, tally, variety}), response);
    return;
  }
  const Endpoint& endpoint = endpointFor(call);
  call.tail = call.path.substr(std::min(call.path.size(), endpoint.path.size()));
  Violations violations;
  checkShape(endpoint, service, call, violations);
  if (endpoint.check) endpoint.check(call, violations);
  const auto fault = faults.strike(call.path);
  const Plan next = plan(call, endpoint, violations, fault);
  record(call, violations, fault, next);
  tally.note(call, fault.has_value(), violations, next);
  if (next.pause.count() > 0) connection.waitForHangup(next.pause);
  if (next.deliver) {
    next.deliver(connection);
    connection.abandon();
  } else {
    send(*next.answer, response);
  }
}

Server::Server(Options options) : impl_(std::make_unique<Impl>(std::move(options))) {}

Server::~Server() { stop(); }

void Server::start() {
  const std::lock_guard lock(impl_->mutex);
  if (impl_->stopped) throw std::runtime_error("a sandbox server cannot be started again: make another");
  const Options& options = impl_->options;
  if (options.tls) impl_->identity.emplace(options.host);
  // Requests that come in before the base URL is known find it missing in their answers, but nobody knows the
  // port yet.
  const int port =
      impl_->listener.start(options.host, options.port, impl_->identity ? &*impl_->identity : nullptr);
  impl_->baseURL = fmt::format("{}://{}:{}", options.tls ? "https" : "http", options.host, port);
  impl_->catalogue.setBaseURL(impl_->baseURL);
}

void Server::stop() {
  {
    const std::lock_guard lock(impl_->mutex);
    if (impl_->stopped) return;
    impl_->stopped = true;
  }
  impl_->journal.close();
  impl_->outage.end();
  impl_->listener.stop();
}

std::string Server::baseURL() const {
  const std::lock_guard lock(impl_->mutex);
  return impl_->baseURL;
}

std::string Server::certificatePEM() const {
  const std::lock_guard lock(impl_->mutex);
  return impl_->identity ? impl_->identity->certificatePEM() : "";
}

void Server::beginOutage(std::chrono::milliseconds length) { impl_->outage.begin(length); }
void Server::setFaults(const json& faults) { impl_->faults.set(parseFaults(faults)); }
void Server::clearFaults() { impl_->faults.clear(); }
json Server::requests() const { return impl_->journal.requests(); }
json Server::events() const { return impl_->journal.events(); }

std::optional<json> Server::waitForRequest(const std::function<bool(const json&)>& predicate,
                                           std::chrono::milliseconds timeout) const {
  return impl_->journal.waitForRequest(predicate, timeout);
}

void Server::reset() {
  impl_->journal.clear();
  impl_->ledger.forgetImpressions();
  impl_->faults.clear();
  impl_->tally.clear();
}

void Server::setInitAnswer(json answer) { impl_->catalogue.setInitAnswer(std::move(answer)); }

void Server::setCampaigns(const std::string& placement, json campaigns) {
  impl_->catalogue.setCampaigns(placement, std::move(campaigns));
}

void Server::setAnswer(const std::string& path, int status, std::string contentType, std::string body) {
  impl_->catalogue.setAnswer(
      path, {.status = status, .contentType = std::move(contentType), .body = {std::move(body)}});
}

void Server::setCanReward(const std::string& placement, std::string text) {
  impl_->catalogue.setCanReward(placement, std::move(text));
}

void Server::setCanView(const std::string& placement, std::string text) {
  impl_->catalogue.setCanView(placement, std::move(text));
}

}  // namespace vantorium::sandbox
