// GET /ioswidget/, the page of the offer wall: the host that the SDK calls the widget's is this server too
#include <fmt/format.h>

#include "sandbox/endpoints/rules.hpp"

namespace vantorium::sandbox {
namespace {

constexpr const char* nothing =
    "<!doctype html><html lang=en><meta charset=utf-8>"
    "<meta name=viewport content=\"width=device-width, initial-scale=1\"><title>Earn coins</title>"
    "<body style=\"margin:0;padding:30vh 24px 0;background:#f6efe6;color:#1d1950;text-align:center;"
    "font:18px/1.5 system-ui,sans-serif\">"
    "<h1>No offers right now</h1><p><a style=\"color:inherit\" href=\"closead://done\">Close</a></p>\n";

void checkQuery(const Call& call, Violations& violations) {
  checkTarget(call.request.target, violations);
  std::vector<std::string> keys;
  for (const auto& item : call.query) keys.push_back(item.first);
  if (keys != std::vector<std::string>{"appid", "userid", "idfa", "pub_click_id"}) {
    violations.push_back(fmt::format(
        "query keys must be appid, userid, idfa, pub_click_id, each once and in this order, are \"{}\"",
        fmt::join(keys, ", ")));
  }
  if (call.queryValue("appid") == "") violations.emplace_back("appid must be a placement, is empty");
  const std::string idfa = call.queryValue("idfa").value_or("");
  if (!idfa.empty() && !isUUID(idfa))
    violations.push_back(fmt::format("idfa must be an upper-case UUID or empty, is \"{}\"", idfa));
}

Answer page(const Service& service, const Call& call) {
  const auto page = service.catalogue.offerWall(call.queryValue("appid").value_or(""));
  if (!page) return {.status = 404, .contentType = "text/html", .body = {"<h1>No offer wall</h1>"}};
  return {.contentType = "text/html; charset=utf-8", .body = {*page}};
}

}  // namespace

std::vector<Endpoint> widgetEndpoints() {
  return {{"/ioswidget/", {"GET", false, false, false}, &checkQuery, &page, nothing, true}};
}

}  // namespace vantorium::sandbox
