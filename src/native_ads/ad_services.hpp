#pragma once

#include <memory>

#include "cache/file_downloader.hpp"
#include "context/sdk_context.hpp"
#include "protocol/http_client.hpp"

namespace vantorium {

/// What a view of native ads uses of the SDK. All is held weakly, for the view is the application's: an SDK
/// that was shut down is let go of. Empty pointers stand for none: nothing is reported or loaded then.
struct AdServices {
  std::weak_ptr<SdkContext> context;
  std::weak_ptr<HTTPClient> httpClient;
  std::weak_ptr<FileDownloader> downloads;

  /// Whom to report to; null unless the SDK is there and configured. Any thread.
  std::shared_ptr<HTTPClient> reports() const;
};

}  // namespace vantorium
