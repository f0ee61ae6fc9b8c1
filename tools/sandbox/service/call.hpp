#pragma once

#include <httplib.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantorium::sandbox {

/// One request as the endpoints see it.
struct Call {
  explicit Call(const httplib::Request& from);

  bool has(const std::string& header) const { return request.has_header(header); }
  std::string header(const std::string& name) const { return request.get_header_value(name); }
  /// Decoded value of the first query item of that name.
  std::optional<std::string> queryValue(std::string_view name) const;

  const httplib::Request& request;
  std::string path;       ///< Decoded, without the query.
  std::string tail;       ///< What follows the path of a prefix endpoint.
  bool hasQuery = false;  ///< Whether there is a "?", with or without a query.
  std::vector<std::pair<std::string, std::string>> query;  ///< Decoded, in the order of the wire.
  nlohmann::json body;  ///< Parsed; text when it is not JSON; null when empty.
};

}  // namespace vantorium::sandbox
