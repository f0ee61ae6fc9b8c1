#include "protocol/http_client.hpp"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "context/retry.hpp"
#include "model/json.hpp"
#include "platform/foundation/ascii.hpp"
#include "platform/foundation/completion_guard.hpp"
#include "platform/foundation/files.hpp"
#include "platform/foundation/url.hpp"
#include "protocol/endpoint.hpp"
#include "protocol/envelope.hpp"

namespace vantorium {

using nlohmann::json;

namespace {

/// The placements of an init answer, if they are what they should be: objects of strings.
std::optional<HTTPClient::Placements> placementsOf(const json& answer) {
  const auto found = answer.find("placements");
  if (found == answer.end() || !found->is_array()) return std::nullopt;
  const bool isSound = std::ranges::all_of(*found, [](const json& placement) {
    return placement.is_object() &&
           std::ranges::all_of(placement, [](const json& value) { return value.is_string(); });
  });
  if (!isSound) return std::nullopt;
  return found->get<HTTPClient::Placements>();
}

/// The token of an init answer; one that cannot stand in a header counts as absent.
std::optional<std::string> tokenOf(const json& answer) {
  auto token = stringValue(answer, "token");
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
  if (token && std::ranges::any_of(*token, isControl)) token.reset();
  return token;
}

/// How long a report waits that could not be sent, and how many may wait.
constexpr Seconds firstReportPause{5}, longestReportPause{600};
constexpr int mostWaitingReports = 100;

/// No word is longer than one byte less, whatever the length of the answer.
constexpr std::size_t longestPermission = 6;

/// The answer to a permission check, a bare word.
std::optional<bool> permissionOf(std::string_view text) {
  const std::string word = asciiLowered(std::string(text.substr(0, longestPermission)));
  if (word == "true") return true;
  return word == "false" ? std::optional(false) : std::nullopt;
}

}  // namespace

HTTPClient::HTTPClient(std::shared_ptr<SdkContext> context, std::shared_ptr<HTTPSession> session,
                       std::string baseURL, ClientDevice device)
    : context_(std::move(context)),
      session_(std::move(session)),
      baseURL_(std::move(baseURL)),
      device_(std::move(device)) {}

std::optional<std::string> HTTPClient::sessionToken() const {
  const MutexLock lock(mutex_);
  return sessionToken_;
}

void HTTPClient::setSessionToken(std::optional<std::string> token) {
  const MutexLock lock(mutex_);
  sessionToken_ = std::move(token);
}

/// Sends the request, or returns why it cannot be sent; the completion is then not called.
std::optional<Error> HTTPClient::send(const Endpoint& endpoint, HTTPSession::Completion completion) {
  const auto text = endpoint.isEncoded ? urlEncodedString(endpoint.url) : endpoint.url;
  const auto url = text ? URL::parse(*text) : std::nullopt;
  if (!url) return VantoriumError::internalError();

  HTTPRequest request;
  request.url = url->absoluteString();
  request.method = endpoint.method;
  request.mostBodyBytes = largestAnswer;
  request.body = endpoint.body;
  if (endpoint.hasContentType) request.headers.emplace_back("Content-Type", "application/json");
  if (endpoint.hasUserAgent)
    request.headers.emplace_back("User-Agent", context_->host().device().facts().model);
  if (endpoint.isAuthorized) {
    const auto token = sessionToken();
    if (!token) return VantoriumError::notConfigured();
    request.headers.emplace_back("Authorization", "Bearer " + *token);
  }
  session_->send(std::move(request), std::move(completion));
  return std::nullopt;
}

void HTTPClient::setUp(const json& withParams, const SetUpCompletion& completion) {
  const auto finish = [self = shared_from_this(), completion](const HTTPAnswer& answer) {
    const Envelope envelope = Envelope::read(answer);
    if (!envelope.object) {
      completion(false, std::nullopt, envelope.error);
      return;
    }
    const json& object = *envelope.object;
    self->setSessionToken(tokenOf(object));
    if (const auto isTest = object.find("isTest"); isTest != object.end() && isTest->is_boolean())
      self->context_->updateFlags([&](SdkContext::Flags& flags) { flags.isTestMode = isTest->get<bool>(); });
    completion(true, placementsOf(object), std::nullopt);
    self->context_->host().print("VANTORIUM LOG: Vantorium framework successfully initialized!");
  };
  const Endpoint endpoint{.method = "POST",
                          .url = baseURL_ + "/api/init",
                          .isEncoded = false,
                          .hasContentType = true,
                          .body = prettyPrinted(withParams)};
  if (const auto error = send(endpoint, finish)) completion(false, std::nullopt, error);
}

void HTTPClient::getRewardableOffer(const std::string& forPlacement, const OfferCompletion& completion) {
  const auto finish = [context = context_, completion](const HTTPAnswer& answer) {
    const Envelope envelope = Envelope::read(answer);
    if (envelope.flaw == Envelope::Flaw::notJSON) context->logError(envelope.error->errorMessage());
    completion(envelope.object ? std::make_shared<RewardableOffer>(*envelope.object) : nullptr,
               envelope.error);
    if (envelope.flaw == Envelope::Flaw::broken)
      context->logError(
          invalidResponseLine("Invalid server response from /api/offers/ Response: ", *answer.body));
  };
  const Endpoint endpoint{.url = baseURL_ + "/api/offers/" + forPlacement,
                          .hasContentType = true,
                          .hasUserAgent = true,
                          .isAuthorized = true};
  if (const auto error = send(endpoint, finish)) completion(nullptr, error);
}

void HTTPClient::getRewardablePopup(const TextCompletion& completion) {
  const auto finish = [context = context_, completion](const HTTPAnswer& answer) {
    if (!answer.body) {
      completion(std::nullopt, answer.error);
    } else if (!isUTF8(answer.body->bytes())) {
      completion(std::nullopt, invalidServerResponse());
      context->logError("Invalid server response from /api/rewardedPopup/");
    } else {
      completion(std::string(answer.body->bytes()), std::nullopt);
    }
  };
  const Endpoint endpoint{
      .url = baseURL_ + "/api/rewardedPopup", .hasContentType = true, .isAuthorized = true};
  if (const auto error = send(endpoint, finish)) completion(std::nullopt, error);
}

void HTTPClient::canView(const std::string& forPlacement, const Completion& completion) {
  ask("/api/canView/", forPlacement, completion);
}

void HTTPClient::canReward(const std::string& forPlacement, const Completion& completion) {
  ask("/api/canReward/", forPlacement, completion);
}

void HTTPClient::ask(const std::string& path, const std::string& placement, const Completion& completion) {
  const auto finish = [context = context_, path, completion](const HTTPAnswer& answer) {
    if (!answer.body) {
      completion(false, answer.error);
      return;
    }
    if (const auto permission = permissionOf(answer.body->bytes())) {
      completion(*permission, std::nullopt);
      return;
    }
    completion(false, invalidServerResponse());
    const std::string line = "Invalid server response from " + path;
    context->logError(invalidResponseLine(line + " Response: ", *answer.body).value_or(line));
  };
  if (const auto error = send({.url = baseURL_ + path + placement, .isAuthorized = true}, finish))
    completion(false, error);
}

void HTTPClient::logError(const std::string& withAppID, const std::string& userID,
                          const std::string& errorMessage) {
  json body = device_.description(withAppID, userID);
  body["log"] = errorMessage;
  send({.method = "POST",
        .url = baseURL_ + "/api/logError",
        .isEncoded = false,
        .hasContentType = true,
        .body = prettyPrinted(body)},
       [](const HTTPAnswer&) {});
}

void HTTPClient::reportImpression(const std::string& forImpression, const Completion& completion) {
  report(baseURL_ + "/api/impressions/" + forImpression, completion);
}

void HTTPClient::reportVideoStarted(const std::string& forImpression, const Completion& completion) {
  report(baseURL_ + "/api/impressions/" + forImpression + "/started", completion);
}

void HTTPClient::reportFinished(const std::string& forImpression, const Completion& completion) {
  report(baseURL_ + "/api/impressions/" + forImpression + "/finished", completion);
}

void HTTPClient::reportClick(const std::string& forImpression,
                             const std::optional<std::map<std::string, std::string>>& params,
                             const Completion& completion) {
  std::string query;
  if (params)
    for (const auto& [key, value] : *params) query.append(key).append("=").append(value).append("&");
  // The service decodes the query twice, so it is encoded here and again with the whole URL.
  query = urlEncodedString(query).value_or(query);
  report(baseURL_ + "/api/impressions/" + forImpression + "/click?" + query, completion);
}

/// One event on its way to the service.
struct HTTPClient::Report {
  Report(std::string address, const std::shared_ptr<SdkContext>& context, const Completion& completion)
      : url(std::move(address)),
        isAnswerRead(completion != nullptr),
        ended(completion, false, VantoriumError::internalError("The work was dropped. Try again.")),
        retry(context, firstReportPause, longestReportPause) {}

  const std::string url;
  const bool isAnswerRead;
  const CompletionGuard<bool, std::optional<Error>> ended;
  Retry retry;
};

void HTTPClient::report(const std::string& forURL, const Completion& completion) {
  send(std::make_shared<Report>(forURL, context_, completion));
}

void HTTPClient::send(const std::shared_ptr<Report>& report) {
  const Endpoint endpoint{.method = "POST", .url = report->url, .hasContentType = true, .isAuthorized = true};
  const auto error = send(endpoint, [self = shared_from_this(), report](const HTTPAnswer& answer) {
    if (!self->sendAgain(report, answer)) self->finish(*report, answer);
  });
  if (error) report->ended(false, error);
}

/// An event that is counted twice is worse than one that is lost: it is sent again only if nothing of it had
/// left. Whether it will be.
bool HTTPClient::sendAgain(const std::shared_ptr<Report>& report, const HTTPAnswer& answer) {
  if (!answer.error || answer.hasLeft || context_->hasEnded()) return false;
  if (waitingReports_ >= mostWaitingReports) return false;
  // Counted as long as it waits, whatever ends that.
  ++waitingReports_;
  std::shared_ptr<void> waiting(nullptr, [self = shared_from_this()](void*) { --self->waitingReports_; });
  report->retry.schedule([self = shared_from_this(), report, waiting]() mutable {
    waiting.reset();
    self->send(report);
  });
  return true;
}

void HTTPClient::finish(const Report& report, const HTTPAnswer& answer) {
  if (!report.isAnswerRead) return;
  const Envelope envelope = Envelope::read(answer);
  report.ended(!envelope.error, envelope.error);
  if (envelope.flaw == Envelope::Flaw::notJSON) context_->logError(envelope.error->errorMessage());
  if (envelope.flaw == Envelope::Flaw::broken)
    context_->logError(invalidResponseLine(
        "Invalid server response from " + urlEncodedString(report.url).value_or(report.url) + " Response: ",
        *answer.body));
}

}  // namespace vantorium
