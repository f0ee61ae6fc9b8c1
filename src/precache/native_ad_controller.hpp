#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/dispatch_queue.hpp>
#include <vantorium/error.hpp>

#include "cache/file.hpp"
#include "client/client.hpp"
#include "model/native_ad.hpp"

namespace vantorium {

/// Brings the files of one native ad, its media and its icon, to disk and writes into the record where they
/// are. Until the completion has run the record is the controller's alone.
///
/// The owner keeps the controller until then; dropping it earlier makes the precache fail.
class NativeAdController : public std::enable_shared_from_this<NativeAdController> {
 public:
  using Completion = std::function<void(bool success, std::optional<Error> error)>;

  NativeAdController(std::shared_ptr<VantoriumNativeAd> nativeAd, std::shared_ptr<Client> client);

  /// Downloads the files. Completes once, on `queue` (null: the main queue), with the error of the first file
  /// in order that failed; files after it are then not written into the record. Any thread.
  void precache(const std::shared_ptr<DispatchQueue>& queue, Completion completion);

 private:
  std::vector<std::string> urls() const;
  std::optional<Error> record(const std::vector<std::shared_ptr<File>>& files) const;

  const std::shared_ptr<VantoriumNativeAd> nativeAd_;
  const std::shared_ptr<Client> client_;
};

}  // namespace vantorium
