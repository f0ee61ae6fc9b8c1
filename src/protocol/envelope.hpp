#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include <vantorium/error.hpp>

#include "platform/foundation/data.hpp"
#include "platform/net/http_session.hpp"

namespace vantorium {

/// What a JSON answer of the service says: exactly one of `object`, the whole answer of a success, and
/// `error`.
struct Envelope {
  enum class Flaw {
    none,     ///< a success, a transport error, or an error in the service's own words
    notJSON,  ///< `error` is the parser's
    broken,   ///< JSON, but not what the service promises
  };

  std::optional<nlohmann::json> object = {};
  std::optional<Error> error = {};
  Flaw flaw = Flaw::none;

  /// The answer that is JSON, but not what was promised.
  static Envelope broken();
  /// Reads what the session brought.
  static Envelope read(const HTTPAnswer& answer);
};

/// The error of an answer that is not what the service promises.
Error invalidServerResponse();

/// The line for the error report: `prefix` and the body, or none when that is not text.
std::optional<std::string> invalidResponseLine(const std::string& prefix, const Data& body);

}  // namespace vantorium
