#include "sandbox/service/call.hpp"

namespace vantorium::sandbox {
namespace {

std::vector<std::pair<std::string, std::string>> splitQuery(std::string_view query) {
  std::vector<std::pair<std::string, std::string>> items;
  while (!query.empty()) {
    const std::string_view item = query.substr(0, query.find('&'));
    query.remove_prefix(std::min(query.size(), item.size() + 1));
    if (item.empty()) continue;
    const size_t equals = std::min(item.find('='), item.size());
    const std::string_view value = item.substr(std::min(equals + 1, item.size()));
    items.emplace_back(httplib::detail::decode_url(std::string(item.substr(0, equals)), false),
                       httplib::detail::decode_url(std::string(value), false));
  }
  return items;
}

nlohmann::json parseBody(const std::string& body) {
  if (body.empty()) return nullptr;
  auto parsed = nlohmann::json::parse(body, nullptr, false);
  return parsed.is_discarded() ? nlohmann::json(body) : parsed;
}

}  // namespace

Call::Call(const httplib::Request& from) : request(from), body(parseBody(from.body)) {
  const std::string_view target = from.target;
  const size_t mark = target.find('?');
  path = httplib::detail::decode_url(std::string(target.substr(0, mark)), false);
  hasQuery = mark != std::string_view::npos;
  if (hasQuery) query = splitQuery(target.substr(mark + 1));
}

std::optional<std::string> Call::queryValue(std::string_view name) const {
  for (const auto& [key, value] : query) {
    if (key == name) return value;
  }
  return std::nullopt;
}

}  // namespace vantorium::sandbox
