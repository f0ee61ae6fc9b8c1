#include "hosts/gtk/web_context.hpp"

#include <utility>

namespace vantorium::gtk {

namespace {

void setUpContent(WebKitWebView* view) {
  const GdkRGBA clear{0, 0, 0, 0};
  webkit_web_view_set_background_color(view, &clear);
  webkit_web_view_set_is_muted(view, TRUE);
  WebKitUserStyleSheet* const noScrolling = webkit_user_style_sheet_new(
      "html { overflow: hidden !important; }", WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
      WEBKIT_USER_STYLE_LEVEL_USER, nullptr, nullptr);
  webkit_user_content_manager_add_style_sheet(webkit_web_view_get_user_content_manager(view), noScrolling);
  webkit_user_style_sheet_unref(noScrolling);
}

// Each of these would otherwise open a dialog, a window or a menu, or ask the user something in the ad's
// name.
void refuseEverythingElse(WebKitWebView* view) {
  const auto handled = +[]() -> gboolean { return TRUE; };
  for (const char* signal :
       {"context-menu", "enter-fullscreen", "print", "show-notification", "run-color-chooser"}) {
    g_signal_connect(view, signal, G_CALLBACK(handled), nullptr);
  }
  g_signal_connect(view, "permission-request",
                   G_CALLBACK(+[](WebKitWebView*, WebKitPermissionRequest* request) -> gboolean {
                     webkit_permission_request_deny(request);
                     return TRUE;
                   }),
                   nullptr);
  g_signal_connect(view, "run-file-chooser",
                   G_CALLBACK(+[](WebKitWebView*, WebKitFileChooserRequest* request) -> gboolean {
                     webkit_file_chooser_request_cancel(request);
                     return TRUE;
                   }),
                   nullptr);
  g_signal_connect(view, "authenticate",
                   G_CALLBACK(+[](WebKitWebView*, WebKitAuthenticationRequest* request) -> gboolean {
                     webkit_authentication_request_cancel(request);
                     return TRUE;
                   }),
                   nullptr);
  g_signal_connect(view, "script-dialog",
                   G_CALLBACK(+[](WebKitWebView*, WebKitScriptDialog* dialog) -> gboolean {
                     const auto type = webkit_script_dialog_get_dialog_type(dialog);
                     const bool asksToLeave = type == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM;
                     if (asksToLeave) webkit_script_dialog_confirm_set_confirmed(dialog, TRUE);
                     return TRUE;
                   }),
                   nullptr);
}

}  // namespace

WebContext::WebContext(const std::filesystem::path& filterFolder, std::shared_ptr<DispatchQueue> mainQueue)
    : session_(webkit_network_session_new_ephemeral()),
      settings_(webkit_settings_new()),
      filters_(filterFolder),
      mainQueue_(std::move(mainQueue)) {
  g_signal_connect(
      session_, "download-started",
      G_CALLBACK(+[](WebKitNetworkSession*, WebKitDownload* download) { webkit_download_cancel(download); }),
      nullptr);
  g_object_set(
      settings_,
      // Confined by the filter; games fetch their own data.
      "allow-file-access-from-file-urls", TRUE, "media-playback-requires-user-gesture", FALSE,
      "enable-developer-extras", FALSE, "enable-fullscreen", FALSE, "enable-back-forward-navigation-gestures",
      FALSE, "enable-page-cache", FALSE, "enable-dns-prefetching", FALSE,
      // To hear of them: none ever opens.
      "javascript-can-open-windows-automatically", TRUE, "javascript-can-access-clipboard", FALSE, nullptr);
}

WebContext::~WebContext() {
  g_object_unref(settings_);
  g_object_unref(session_);
}

WebKitWebView* WebContext::makeView() const {
  WebKitWebsitePolicies* const policies =
      webkit_website_policies_new_with_policies("autoplay", WEBKIT_AUTOPLAY_ALLOW, nullptr);
  auto* const view =
      WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", session_, "settings", settings_,
                                   "website-policies", policies, nullptr));
  g_object_unref(policies);
  setUpContent(view);
  refuseEverythingElse(view);
  return view;
}

}  // namespace vantorium::gtk
