#include "protocol/envelope.hpp"

#include "model/json.hpp"
#include "platform/foundation/files.hpp"

namespace vantorium {

namespace {

/// Nobody reads more of a bad answer, and it is sent over the user's connection.
constexpr std::size_t longestQuotedBody = std::size_t{1} << 20U;

}  // namespace

Envelope Envelope::broken() { return {.error = invalidServerResponse(), .flaw = Flaw::broken}; }

Envelope Envelope::read(const HTTPAnswer& answer) {
  if (!answer.body) return {.error = answer.error};
  std::optional<Error> error;
  auto value = parseJSON(answer.body->bytes(), error);
  if (!value) return {.error = error, .flaw = Flaw::notJSON};
  const auto status = stringValue(*value, "status");
  if (status == "success") return {.object = std::move(value)};
  const auto text = stringValue(*value, "error");
  if (status == "error" && text) return {.error = VantoriumError::internalError(text)};
  return broken();
}

Error invalidServerResponse() { return VantoriumError::internalError("Invalid server response."); }

std::optional<std::string> invalidResponseLine(const std::string& prefix, const Data& body) {
  if (!isUTF8(body.bytes())) return std::nullopt;
  return prefix + std::string(body.bytes().substr(0, longestQuotedBody));
}

}  // namespace vantorium
