#include "hosts/gtk/web_engine.hpp"

#include <utility>

#include "platform/foundation/url.hpp"
#include "platform/foundation/worker_pool.hpp"

namespace vantorium::gtk {

namespace {

constexpr const char* errorDomain = "webkit";
constexpr int terminatedCode = 1, confinementCode = 2;

// What an engine can show. Other schemes are commands to the screen and leave the page as it is.
bool isShowable(const std::string& url) {
  const std::string scheme = url.substr(0, url.find(':'));
  for (const char* each : {"http", "https", "file", "about", "data", "blob"}) {
    if (g_ascii_strcasecmp(scheme.c_str(), each) == 0) return true;
  }
  return false;
}

WebViewNavigationType typeOf(WebKitNavigationAction* action) {
  switch (webkit_navigation_action_get_navigation_type(action)) {
    case WEBKIT_NAVIGATION_TYPE_LINK_CLICKED:
      return WebViewNavigationType::linkClicked;
    case WEBKIT_NAVIGATION_TYPE_FORM_SUBMITTED:
      return WebViewNavigationType::formSubmitted;
    case WEBKIT_NAVIGATION_TYPE_BACK_FORWARD:
      return WebViewNavigationType::backForward;
    case WEBKIT_NAVIGATION_TYPE_RELOAD:
      return WebViewNavigationType::reload;
    case WEBKIT_NAVIGATION_TYPE_FORM_RESUBMITTED:
      return WebViewNavigationType::formResubmitted;
    default:
      return WebViewNavigationType::other;
  }
}

std::string urlOf(WebKitNavigationAction* action) {
  const char* const url = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  return url != nullptr ? url : "";
}

bool isCancellation(const GError* error) {
  return g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) ||
         g_error_matches(error, WEBKIT_POLICY_ERROR,
                         WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE);
}

}  // namespace

WebKitEngine::WebKitEngine(std::shared_ptr<WebContext> context)
    : context_(std::move(context)), view_(context_->makeView()) {
  g_object_ref_sink(view_);
  widget_ = {Glib::wrap(GTK_WIDGET(view_)), [](Gtk::Widget* widget) { g_object_unref(widget->gobj()); }};
  connectSignals();
}

WebKitEngine::~WebKitEngine() {
  g_signal_handlers_disconnect_by_data(view_, this);
  webkit_web_view_stop_loading(view_);
  webkit_web_view_set_is_muted(view_, TRUE);
}

void WebKitEngine::connectSignals() {
  g_signal_connect(view_, "decide-policy", G_CALLBACK(decidePolicy), this);
  g_signal_connect(view_, "create", G_CALLBACK(createWindow), this);
  g_signal_connect(view_, "load-failed", G_CALLBACK(loadFailed), this);
  g_signal_connect(view_, "web-process-terminated", G_CALLBACK(processTerminated), this);
  g_signal_connect(view_, "map", G_CALLBACK(mappedChanged), this);
  g_signal_connect(view_, "unmap", G_CALLBACK(mappedChanged), this);
}

void WebKitEngine::loadFile(const std::string& path, const std::string& readableFolder) {
  confine(readableFolder, [this, url = fileURL(path)] { webkit_web_view_load_uri(view_, url.c_str()); });
}

void WebKitEngine::loadRequest(const std::string& url) {
  const auto start = [this, url] { webkit_web_view_load_uri(view_, url.c_str()); };
  if (!isConfined_) return confine({}, start);
  // The page that is shown stays, and reads its files, until another takes its place.
  ++load_;
  start();
}

void WebKitEngine::loadHTML(const std::string& html, const std::string& baseURL) {
  const auto base = URL::parse(baseURL);
  confine(base && base->scheme() == "file" ? base->path() : "", [this, html, baseURL] {
    // By its length: a NUL in it does not end the page.
    GBytes* const bytes = g_bytes_new(html.data(), html.size());
    webkit_web_view_load_bytes(view_, bytes, "text/html", "UTF-8",
                               baseURL.empty() ? nullptr : baseURL.c_str());
    g_bytes_unref(bytes);
  });
}

void WebKitEngine::confine(const std::string& readableFolder, std::function<void()> start) {
  const unsigned load = ++load_;
  const std::string folder = std::filesystem::path(readableFolder).lexically_normal();
  if (folder.empty()) return compileFilter(folder, std::move(start));
  const auto judged = [this, weak = weak_from_this(), load, folder,
                       start = std::move(start)](bool selfContained) {
    const auto alive = weak.lock();
    if (!alive || load != load_) return;
    if (selfContained) return compileFilter(folder, start);
    fail(Error::platform(
        errorDomain, confinementCode,
        "The page was not loaded: a link in its folder leads out of it. Remove " + folder + "."));
  };
  workers::async([folder, judged, mainQueue = context_->mainQueue()] {
    mainQueue->async([judged, selfContained = isSelfContained(folder)] { judged(selfContained); });
  });
}

void WebKitEngine::compileFilter(const std::string& folder, std::function<void()> start) {
  const auto compiled = [this, weak = weak_from_this(), load = load_, folder, start = std::move(start)](
                            WebKitUserContentFilter* filter, const std::string& error) {
    const auto alive = weak.lock();
    if (!alive || load != load_) return;
    if (filter == nullptr) {
      return fail(
          Error::platform(errorDomain, confinementCode,
                          "The page was not loaded: it could not be confined to its folder. " + error));
    }
    folder_ = folder;
    applyFilter(filter);
    start();
  };
  context_->filters().compile(confinementRules(folder), compiled);
}

void WebKitEngine::applyFilter(WebKitUserContentFilter* filter) {
  WebKitUserContentManager* const manager = webkit_web_view_get_user_content_manager(view_);
  webkit_user_content_manager_remove_all_filters(manager);
  webkit_user_content_manager_add_filter(manager, filter);
  isConfined_ = true;
}

std::shared_ptr<WebKitEngine> WebKitEngine::self() {
  return std::static_pointer_cast<WebKitEngine>(shared_from_this());
}

void WebKitEngine::releaseLater(std::shared_ptr<WebKitEngine> engine) {
  const auto mainQueue = engine->context_->mainQueue();
  mainQueue->async([engine = std::move(engine)] {});
}

bool WebKitEngine::ask(WebKitNavigationAction* action) const {
  const std::string url = urlOf(action);
  if (!mayNavigate(url, folder_)) return false;
  // A copy: the handler may be replaced, or released, by what it does.
  const auto decide = handlers().decidePolicy;
  return (!decide || decide(url, typeOf(action))) && isShowable(url);
}

// The page wants another window. It gets none, but the user's own click leads on in this one.
void WebKitEngine::openInPlace(WebKitNavigationAction* action) {
  const std::string url = urlOf(action);
  if (!isShowable(url)) {
    ask(action);
  } else if (webkit_navigation_action_is_user_gesture(action)) {
    webkit_web_view_load_uri(view_, url.c_str());
  }
}

void WebKitEngine::fail(const Error& error) {
  const auto didFail = handlers().didFail;
  if (didFail) didFail(error);
}

gboolean WebKitEngine::decidePolicy(WebKitWebView*, WebKitPolicyDecision* decision,
                                    WebKitPolicyDecisionType type, WebKitEngine* engine) {
  auto self = engine->self();
  bool allowed = false;
  if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) {
    allowed =
        webkit_response_policy_decision_is_mime_type_supported(WEBKIT_RESPONSE_POLICY_DECISION(decision));
  } else {
    auto* const navigation = WEBKIT_NAVIGATION_POLICY_DECISION(decision);
    WebKitNavigationAction* const action =
        webkit_navigation_policy_decision_get_navigation_action(navigation);
    if (type == WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) {
      allowed = self->ask(action);
    } else {
      self->openInPlace(action);
    }
  }
  allowed ? webkit_policy_decision_use(decision) : webkit_policy_decision_ignore(decision);
  releaseLater(std::move(self));
  return TRUE;
}

GtkWidget* WebKitEngine::createWindow(WebKitWebView*, WebKitNavigationAction* action, WebKitEngine* engine) {
  auto self = engine->self();
  self->openInPlace(action);
  releaseLater(std::move(self));
  return nullptr;
}

gboolean WebKitEngine::loadFailed(WebKitWebView*, WebKitLoadEvent, const char*, GError* error,
                                  WebKitEngine* engine) {
  auto self = engine->self();
  if (!isCancellation(error)) {
    self->fail(Error::platform(g_quark_to_string(error->domain), error->code, error->message));
  }
  releaseLater(std::move(self));
  return TRUE;  // no error page: what was shown stays
}

void WebKitEngine::processTerminated(WebKitWebView*, WebKitWebProcessTerminationReason,
                                     WebKitEngine* engine) {
  auto self = engine->self();
  self->fail(Error::platform(errorDomain, terminatedCode, "The process that showed the page has ended."));
  releaseLater(std::move(self));
}

void WebKitEngine::setAudible(bool audible) {
  isAudible_ = audible;
  updateMuted();
}

void WebKitEngine::updateMuted() {
  webkit_web_view_set_is_muted(view_, !isAudible_ || !gtk_widget_get_mapped(GTK_WIDGET(view_)));
}

}  // namespace vantorium::gtk
