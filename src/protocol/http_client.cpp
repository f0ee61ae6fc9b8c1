#include "protocol/http_client.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "device/init_request_builder.hpp"
#include "model/json.hpp"
#include "platform/foundation/ascii.hpp"
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
                       std::string baseURL, std::shared_ptr<const VantoriumReachability> reachability,
                       std::shared_ptr<const UserDefaults> defaults)
    : context_(std::move(context)),
      session_(std::move(session)),
      baseURL_(std::move(baseURL)),
      reachability_(std::move(reachability)),
      defaults_(std::move(defaults)) {}

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
  const auto finish = [self = shared_from_this(), completion](const auto& body, const auto& transportError) {
    const Envelope envelope = Envelope::read(body, transportError);
    if (!envelope.object) {
      completion(false, std::nullopt, envelope.error);
      return;
    }
    const json& answer = *envelope.object;
    self->setSessionToken(tokenOf(answer));
    if (const auto isTest = answer.find("isTest"); isTest != answer.end() && isTest->is_boolean())
      self->context_->updateFlags([&](SdkContext::Flags& flags) { flags.isTestMode = isTest->get<bool>(); });
    completion(true, placementsOf(answer), std::nullopt);
    self->context_->host().print("VANTORIUM LOG: Vantorium framework successfully initialized!");
  };
  const Endpoint endpoint{.method = "POST",
                          .url = baseURL_ + "/api/init",
                          .isEncoded = false,
                          .hasContentType = true,
                          .body = prettyPrinted(withParams)};
  if (const auto error = send(endpoint, finish)) completion(false, std::nullopt, error);
}

void HTTPClient::downloadFile(const std::string& fromURL, DataCompletion completion) {
  if (!URL::parse(fromURL)) {
    completion(std::nullopt, VantoriumError::internalError());
    return;
  }
  send({.url = fromURL, .isEncoded = false},
       [task = context_->host().beginBackgroundTask(), completion = std::move(completion)](
           auto body, auto error) mutable {
         completion(std::move(body), std::move(error));
         task.reset();
       });
}

std::shared_ptr<void> HTTPClient::dataTask(const std::string& withURL, std::uint64_t mostBytes,
                                           DataCompletion completion) {
  HTTPRequest request;
  request.url = withURL;
  request.mostBodyBytes = mostBytes;
  const std::uint64_t exchange = session_->send(std::move(request), std::move(completion));
  return {nullptr, [session = session_, exchange](void*) { session->cancel(exchange); }};
}

void HTTPClient::getRewardableOffer(const std::string& forPlacement, const OfferCompletion& completion) {
  const auto finish = [context = context_, completion](const auto& body, const auto& transportError) {
    const Envelope envelope = Envelope::read(body, transportError);
    if (envelope.flaw == Envelope::Flaw::notJSON) context->logError(envelope.error->errorMessage());
    completion(envelope.object ? std::make_shared<RewardableOffer>(*envelope.object) : nullptr,
               envelope.error);
    if (envelope.flaw == Envelope::Flaw::broken)
      context->logError(invalidResponseLine("Invalid server response from /api/offers/ Response: ", *body));
  };
  const Endpoint endpoint{.url = baseURL_ + "/api/offers/" + forPlacement,
                          .hasContentType = true,
                          .hasUserAgent = true,
                          .isAuthorized = true};
  if (const auto error = send(endpoint, finish)) completion(nullptr, error);
}

void HTTPClient::getRewardablePopup(const TextCompletion& completion) {
  const auto finish = [context = context_, completion](const auto& body, const auto& transportError) {
    if (!body) {
      completion(std::nullopt, transportError);
    } else if (body->size() > largestTemplate) {
      const auto error = VantoriumError::internalError(fmt::format(
          "The template of rewardable popups has more than {} bytes. Serve a smaller one.", largestTemplate));
      completion(std::nullopt, error);
      context->logError(error.errorMessage());
    } else if (!isUTF8(body->bytes())) {
      completion(std::nullopt, invalidServerResponse());
      context->logError("Invalid server response from /api/rewardedPopup/");
    } else {
      completion(std::string(body->bytes()), std::nullopt);
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
  const auto finish = [context = context_, path, completion](const auto& body, const auto& transportError) {
    if (!body) {
      completion(false, transportError);
      return;
    }
    if (const auto permission = permissionOf(body->bytes())) {
      completion(*permission, std::nullopt);
      return;
    }
    completion(false, invalidServerResponse());
    const std::string line = "Invalid server response from " + path;
    context->logError(invalidResponseLine(line + " Response: ", *body).value_or(line));
  };
  if (const auto error = send({.url = baseURL_ + path + placement, .isAuthorized = true}, finish))
    completion(false, error);
}

void HTTPClient::logError(const std::string& withAppID, const std::string& userID,
                          const std::string& errorMessage) {
  json body = InitRequestBuilder::requestBody(context_->host(), *defaults_, withAppID, userID, std::nullopt);
  body["log"] = errorMessage;
  send({.method = "POST",
        .url = baseURL_ + "/api/logError",
        .isEncoded = false,
        .hasContentType = true,
        .body = prettyPrinted(body)},
       [](const auto&, const auto&) {});
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

void HTTPClient::report(const std::string& forURL, const Completion& completion) {
  const auto finish = [context = context_, forURL, completion](const auto& body, const auto& transportError) {
    if (!completion) return;
    const Envelope envelope = Envelope::read(body, transportError);
    completion(!envelope.error, envelope.error);
    if (envelope.flaw == Envelope::Flaw::notJSON) context->logError(envelope.error->errorMessage());
    if (envelope.flaw == Envelope::Flaw::broken)
      context->logError(invalidResponseLine(
          "Invalid server response from " + urlEncodedString(forURL).value_or(forURL) + " Response: ",
          *body));
  };
  const Endpoint endpoint{.method = "POST", .url = forURL, .hasContentType = true, .isAuthorized = true};
  const auto error = send(endpoint, finish);
  if (error && completion) completion(false, error);
}

}  // namespace vantorium
