#include "sandbox/endpoints/rules.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace vantorium::sandbox {
namespace {

void checkContentType(const Shape& shape, const Call& call, Violations& violations) {
  if (shape.contentType && call.header("Content-Type") != "application/json") {
    violations.push_back(fmt::format(R"(header Content-Type must be "application/json", is "{}")",
                                     call.header("Content-Type")));
  }
  if (!shape.contentType && call.has("Content-Type"))
    violations.emplace_back("header Content-Type must be absent");
}

void checkUserAgent(const Endpoint& endpoint, const Call& call, Violations& violations) {
  const std::string agent = call.header("User-Agent");
  if (endpoint.shape.userAgent) {
    if (agent.empty())
      violations.emplace_back("header User-Agent must carry the device's model name, is missing");
    if (agent.find('/') != std::string::npos) {
      violations.push_back(
          fmt::format("header User-Agent must carry the device's model name, is \"{}\"", agent));
    }
  } else if (call.has("User-Agent")) {
    // Ad pages are opened by web engines, and files are looked at from a terminal.
    const bool known =
        !endpoint.path.starts_with("/api/") && (agent.starts_with("Mozilla/") || agent.starts_with("curl/"));
    if (!known) violations.push_back(fmt::format("header User-Agent must be absent, is \"{}\"", agent));
  }
}

void checkAuthorization(const Shape& shape, const Service& service, const Call& call,
                        Violations& violations) {
  constexpr std::string_view scheme = "Bearer ";
  const std::string value = call.header("Authorization");
  if (!shape.authorization) {
    if (call.has("Authorization")) violations.emplace_back("header Authorization must be absent");
  } else if (!call.has("Authorization")) {
    violations.emplace_back("header Authorization is missing: \"Bearer \" and the token of the init answer");
  } else if (!value.starts_with(scheme)) {
    violations.push_back(fmt::format(R"(header Authorization must begin with "Bearer ", is "{}")", value));
  } else if (!service.ledger.knowsToken(value.substr(scheme.size()))) {
    violations.push_back(fmt::format("the token \"{}\" was not handed out by this service: call init first",
                                     value.substr(scheme.size())));
  }
}

bool upperHex(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); }

bool isDigits(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

bool isDate(const std::string& text) {  // YYYY/MM/dd
  return text.size() == 10 && text[4] == '/' && text[7] == '/' &&
         isDigits(text.substr(0, 4) + text.substr(5, 2) + text.substr(8));
}

using Test = bool (*)(const nlohmann::json&);
struct Field {
  std::string_view key;
  std::string_view expected;
  Test valid;
  bool required;
};

using nlohmann::json;

bool string(const json& value) { return value.is_string(); }
bool number(const json& value) { return value.is_number(); }
bool wholeSeconds(const json& value) { return value.is_number_integer() && value.get<int64_t>() % 1000 == 0; }
bool fraction(const json& value) { return value.is_number() && value >= 0 && value <= 1; }

constexpr std::array deviceFields{
    Field{"appId", "a string", &string, true},
    Field{"userId", "a string", &string, true},
    Field{"osVersion", "a string", &string, true},
    Field{"manufacturer", "\"apple\"", [](const json& value) { return value == "apple"; }, true},
    Field{"sWidth", "a number", &number, true},
    Field{"sHeight", "a number", &number, true},
    Field{"platform", "a string", &string, true},
    Field{"model", "a string", &string, true},
    Field{"rooted", "a boolean", [](const json& value) { return value.is_boolean(); }, true},
    Field{"timezone", "a string", &string, true},
    Field{"volumeLevel", "a number from 0 to 1", &fraction, true},
    Field{"batteryLevel", "a number from 0 to 1, or -1",
          [](const json& value) { return fraction(value) || (value.is_number() && value == -1); }, true},
    Field{"batteryState", "CHARGING, FULL, NOT_CHARGING or UNKNOWN",
          [](const json& value) {
            return value == "CHARGING" || value == "FULL" || value == "NOT_CHARGING" || value == "UNKNOWN";
          },
          true},
    Field{"package", "a string", &string, false},
    Field{"sdkVersion", "a string", &string, false},
    Field{"idfa", "an upper-case UUID",
          [](const json& value) { return value.is_string() && isUUID(value.get<std::string>()); }, false},
    Field{"carrier", "a string", &string, false},
    Field{"locale", "a string", &string, false},
    Field{"diskFreeSize", "a string of decimal digits",
          [](const json& value) { return value.is_string() && isDigits(value.get<std::string>()); }, false},
    Field{"appVersion", "a string", &string, false},
    Field{"firstInstallTime", "milliseconds of whole seconds", &wholeSeconds, false},
    Field{"lastUpdateTime", "milliseconds of whole seconds", &wholeSeconds, false},
};

constexpr std::array userFields{
    Field{"gender", "a string", &string, false},
    Field{"age", "an integer", [](const json& value) { return value.is_number_integer(); }, false},
    Field{"dateOfBirth", "a date like 2018/12/31",
          [](const json& value) { return value.is_string() && isDate(value.get<std::string>()); }, false},
};

constexpr std::array logFields{Field{"log", "a string", &string, true}};

template <size_t N>
void checkFields(const json& body, const std::array<Field, N>& fields, json& unknown,
                 Violations& violations) {
  for (const auto& field : fields) {
    const auto value = body.find(field.key);
    if (value == body.end()) {
      if (field.required) violations.push_back(fmt::format("body key \"{}\" is missing", field.key));
      continue;
    }
    if (!field.valid(*value)) {
      violations.push_back(
          fmt::format("body key \"{}\" must be {}, is {}", field.key, field.expected, value->dump()));
    }
    unknown.erase(std::string(field.key));
  }
}

// Of an ad request: the first three keys are there once, the fourth any number of times.
void checkAdKeys(const Call& call, std::string_view last, Violations& violations) {
  std::vector<std::string_view> order{"placementId", "connectionType", "numOfCampaigns", "cachedCampaignIds"};
  if (!last.empty()) order.push_back(last);
  std::vector<std::ptrdiff_t> ranks;
  for (const auto& [key, value] : call.query) {
    const auto found = std::find(order.begin(), order.end(), key);
    if (found == order.end()) {
      violations.push_back(fmt::format("query key \"{}\" is unknown", key));
    } else {
      ranks.push_back(found - order.begin());
    }
  }
  for (size_t rank = 0; rank < order.size(); ++rank) {
    const auto times = std::count(ranks.begin(), ranks.end(), static_cast<std::ptrdiff_t>(rank));
    if ((rank < 3 && times != 1) || (rank > 3 && times > 1)) {
      violations.push_back(
          fmt::format("query key \"{}\" must be there once, is {} times", order[rank], times));
    }
  }
  if (!std::is_sorted(ranks.begin(), ranks.end()))
    violations.push_back(fmt::format("query keys must come in the order {}", fmt::join(order, ", ")));
}

}  // namespace

void checkTarget(const std::string& target, Violations& violations) {
  constexpr std::string_view plain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789!$&'()*+,-./:;=?@_~";
  for (size_t at = 0; at < target.size(); ++at) {
    const bool escape =
        target[at] == '%' && at + 2 < target.size() && upperHex(target[at + 1]) && upperHex(target[at + 2]);
    if (escape || plain.find(target[at]) != std::string_view::npos) continue;
    violations.push_back(
        fmt::format("the target's character {} must be percent-escaped (with upper-case digits)", at));
    return;
  }
}

bool isUUID(const std::string& text) {
  constexpr std::string_view form = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
  return text.size() == form.size() && std::equal(text.begin(), text.end(), form.begin(), [](char c, char f) {
           return f == '-' ? c == '-' : upperHex(c);
         });
}

void checkShape(const Endpoint& endpoint, const Service& service, const Call& call, Violations& violations) {
  const Shape& shape = endpoint.shape;
  if (call.request.method != shape.method) {
    violations.push_back(fmt::format("method must be {}, is {}", shape.method, call.request.method));
  }
  checkContentType(shape, call, violations);
  checkUserAgent(endpoint, call, violations);
  checkAuthorization(shape, service, call, violations);
  if (shape.authorization) {
    checkTarget(call.request.target, violations);
    if (!call.request.body.empty()) violations.emplace_back("there must be no body");
  }
}

void checkAdQuery(const Call& call, std::string_view last, Violations& violations) {
  checkAdKeys(call, last, violations);
  const auto number = call.queryValue("numOfCampaigns");
  if (number && !isDigits(*number))
    violations.push_back(fmt::format("numOfCampaigns must be decimal, is \"{}\"", *number));
  constexpr std::array<std::string_view, 8> links{"None", "WIFI",     "2G",   "3G",
                                                  "4G",   "Cellular", "WiFi", "No Connection"};
  const auto link = call.queryValue("connectionType");
  if (link && std::find(links.begin(), links.end(), *link) == links.end()) {
    violations.push_back(
        fmt::format("connectionType must be one of {}, is \"{}\"", fmt::join(links, ", "), *link));
  }
}

void checkDeviceBody(const Call& call, bool log, Violations& violations) {
  if (!call.body.is_object()) {
    violations.emplace_back("the body must be a JSON object");
    return;
  }
  json unknown = call.body;
  checkFields(call.body, deviceFields, unknown, violations);
  if (log) {
    checkFields(call.body, logFields, unknown, violations);
  } else {
    checkFields(call.body, userFields, unknown, violations);
  }
  for (const auto& [key, value] : unknown.items())
    violations.push_back(fmt::format("body key \"{}\" is unknown", key));
}

}  // namespace vantorium::sandbox
