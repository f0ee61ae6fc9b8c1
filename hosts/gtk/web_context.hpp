#pragma once

#include <webkit/webkit.h>

#include <filesystem>
#include <memory>

#include <vantorium/dispatch_queue.hpp>

#include "hosts/gtk/page_confinement.hpp"

namespace vantorium::gtk {

/// What all pages of a host share. Nothing that a page stores outlives the process. Main thread only.
class WebContext {
 public:
  /// `filterFolder` holds compiled filters for a moment each.
  WebContext(const std::filesystem::path& filterFolder, std::shared_ptr<DispatchQueue> mainQueue);
  ~WebContext();
  WebContext(const WebContext&) = delete;
  WebContext& operator=(const WebContext&) = delete;

  /// A view (floating) with a clear background, no scrolling and no sound, whose page gets no dialogs,
  /// downloads, permissions or menus.
  WebKitWebView* makeView() const;
  FilterCompiler& filters() { return filters_; }
  const std::shared_ptr<DispatchQueue>& mainQueue() const { return mainQueue_; }

 private:
  WebKitNetworkSession* session_;
  WebKitSettings* settings_;
  FilterCompiler filters_;
  std::shared_ptr<DispatchQueue> mainQueue_;
};

}  // namespace vantorium::gtk
