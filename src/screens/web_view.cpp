#include "screens/web_view.hpp"

#include <unicode/unistr.h>

#include <cstdint>
#include <string_view>

#include "platform/foundation/ascii.hpp"
#include "platform/foundation/files.hpp"
#include "platform/foundation/url.hpp"

namespace vantorium {

namespace {

/// The page's text as UTF-8. What is no UTF-8 is taken for the encoding that pages without a word about it
/// have.
std::string textOf(const std::string& page) {
  if (isUTF8(page)) return page;
  std::string text;
  return icu::UnicodeString(page.data(), static_cast<std::int32_t>(page.size()), "windows-1252")
      .toUTF8String(text);
}

}  // namespace

std::shared_ptr<WebView> WebView::make(Host& host) {
  auto view = std::make_shared<WebView>(host);
  view->setUp();
  return view;
}

void WebView::setUp() {
  engine_ = host_.makeWebEngine();
  const std::weak_ptr<ui::View> weak = weak_from_this();
  const auto lock = [weak] { return std::static_pointer_cast<WebView>(weak.lock()); };
  WebEngine::Handlers handlers;
  handlers.decidePolicy = [lock](const std::string& url, WebViewNavigationType type) {
    const auto self = lock();
    return self ? self->shouldStartLoad(url, type) : true;
  };
  handlers.didFail = [lock](const Error& error) {
    if (const auto self = lock()) self->didFailLoad(error);
  };
  engine_->setHandlers(std::move(handlers));
  addSubview(engine_);
  using ui::LayoutAttribute;
  for (const auto edge :
       {LayoutAttribute::top, LayoutAttribute::bottom, LayoutAttribute::leading, LayoutAttribute::trailing}) {
    addConstraint({engine_, edge, weak, edge, 1, 0});
  }
}

std::optional<Error> WebView::loadFileURL(const std::string& path, const std::string& allowingReadAccessTo) {
  if (host_.webEngineGeneration() == WebEngineGeneration::newer) {
    engine_->loadFile(path, allowingReadAccessTo);
    return std::nullopt;
  }
  std::optional<Error> error;
  const auto page = readFile(path, error);
  if (!page) return error;
  engine_->loadHTML(textOf(*page), folderURL(allowingReadAccessTo));
  return std::nullopt;
}

void WebView::loadRequest(const std::string& url) { engine_->loadRequest(url); }

void WebView::loadHTMLString(const std::string& html, const std::string& baseURL) {
  engine_->loadHTML(html, baseURL);
}

bool WebView::shouldStartLoad(const std::string& url, WebViewNavigationType type) {
  const auto delegate = delegate_.lock();
  return delegate ? delegate->webViewShouldStartLoad(*this, url, type) : true;
}

void WebView::didFailLoad(const Error& error) {
  if (const auto delegate = delegate_.lock()) delegate->webViewDidFailLoad(*this, error);
}

std::string commandOf(const std::string& url) {
  // Not by a full parse: engines hand over URLs that are laxer than the standard, and a command must not be
  // missed.
  const std::size_t colon = url.find(':');
  if (colon == std::string::npos || colon == 0) return {};
  const std::string scheme = asciiLowered(url.substr(0, colon));
  constexpr std::string_view allowed = "abcdefghijklmnopqrstuvwxyz0123456789+-.";
  return scheme.find_first_not_of(allowed) == std::string::npos ? scheme : std::string{};
}

}  // namespace vantorium
