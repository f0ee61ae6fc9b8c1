#include "hosts/headless/wording.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace vantorium::headless {

std::string listed(const std::vector<std::string>& words) {
  return fmt::format("{}", fmt::join(words, ", "));
}

std::string brief(const nlohmann::json& value, std::size_t longest) {
  std::string text = value.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
  if (text.size() > longest) text = text.substr(0, longest) + "...";
  return text;
}

}  // namespace vantorium::headless
