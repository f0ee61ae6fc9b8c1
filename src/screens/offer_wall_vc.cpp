#include "screens/offer_wall_vc.hpp"

#include <fmt/format.h>

#include <utility>

#include "platform/foundation/ascii.hpp"
#include "platform/foundation/url.hpp"
#include "platform/ui/interface_file.hpp"

namespace vantorium {

namespace {

constexpr std::string_view clickScheme = "click://";

/// What the page's command URL says to open, or none.
std::optional<std::string> targetOf(std::string url) {
  for (auto at = url.find(clickScheme); at != std::string::npos; at = url.find(clickScheme, at))
    url.erase(at, clickScheme.size());
  const auto decoded = strictlyPercentDecoded(url);
  const auto target = decoded ? urlEncodedString(*decoded) : std::nullopt;
  return target && URL::parse(*target) ? target : std::nullopt;
}

}  // namespace

OfferWallVC::OfferWallVC(std::shared_ptr<SdkContext> context, std::string widgetURL, std::string appID,
                         std::string userID)
    : PageViewController(std::move(context)),
      widgetURL_(std::move(widgetURL)),
      appID_(std::move(appID)),
      userID_(std::move(userID)) {}

std::shared_ptr<ui::View> OfferWallVC::loadView() { return ui::loadInterface("OfferWallVC", {}); }

/// The wall's address, not yet encoded.
std::string OfferWallVC::address() const {
  const DeviceFacts facts = context().host().device().facts();
  std::string identifier;
  if (facts.trackingEnabled) identifier = asciiUppered(facts.advertisingIdentifier.value_or(""));
  std::string clickID;
  if (const auto& parameter = serverParameter(); parameter && parameter->parameters) {
    const auto found = parameter->parameters->find("clickId");
    if (found != parameter->parameters->end()) clickID = found->second;
  }
  return fmt::format("{}/ioswidget/?appid={}&userid={}&idfa={}&pub_click_id={}", widgetURL_, appID_, userID_,
                     identifier, clickID);
}

void OfferWallVC::loadPage() {
  const auto url = urlEncodedString(address());
  if (url && URL::parse(*url)) webView().loadRequest(*url);
}

void OfferWallVC::pageDidClick(const std::string& url) {
  const auto target = targetOf(url);
  if (!target) return;
  tellClick(appID_);
  application().openURL(*target);
  close();
}

void OfferWallVC::webViewDidFailLoad(WebView& /*view*/, const Error& error) { fail(error); }

}  // namespace vantorium
