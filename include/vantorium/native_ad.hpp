#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/export.h>

namespace vantorium {

class NativeAdController;

namespace ui {
class Image;
}

/// One media file of a native ad: a picture or a video.
///
/// Records belong to whoever holds them: the SDK fills one in before it hands it out, and afterwards reads
/// and marks it on the main thread only, when a view shows it. Use them there.
class VANTORIUM_API VantoriumNativeAdAsset {
 public:
  /// Of a picture, or of a video's picture.
  struct Size {
    double width = 0;   ///< pixels
    double height = 0;  ///< pixels
    /// Whether both measures are the same.
    friend bool operator==(const Size&, const Size&) = default;
  };

  /// A record of the defaults shown here.
  VantoriumNativeAdAsset() = default;

  std::string URL;                              ///< where the service keeps the file
  std::string type;                             ///< "image" or "video"; views pass over anything else
  Size size;                                    ///< pixels; 0 × 0 unless the service told both
  std::optional<std::string> filePath;          ///< where precaching saved the file; none if it did not
  std::optional<std::string> internalFilePath;  ///< the same path

  /// The picture in the file at `filePath`, looked for at the first call and kept. Null when there was no
  /// path then, or the file is not a PNG, JPEG, GIF or WebP of at most 32 MiB; it stays null afterwards. For
  /// the SDK's views: an application that draws by itself reads the file.
  const std::shared_ptr<const ui::Image>& image() const;

 private:
  mutable std::optional<std::shared_ptr<const ui::Image>> image_;
};

/// One native ad: texts, icon and media that the application lays out itself. A field that the service left
/// out, or sent with another type, has its default.
///
/// The files that precaching saved belong to the ad: they are removed when its last reference goes. An asset
/// that is held without its ad keeps none.
///
/// For threads see `VantoriumNativeAdAsset`. An ad may be shown in several views and several times; each of
/// its events is reported once.
class VANTORIUM_API VantoriumNativeAd {
 public:
  /// A record of the defaults shown here.
  VantoriumNativeAd() = default;

  std::string adID;                            ///< the service's name for the ad
  std::string appName;                         ///< of the advertised application
  std::string storeAppID;                      ///< of the advertised application in its store
  std::string storeAppURL;                     ///< its page in the store
  double rating = 0;                           ///< 0 to 5
  std::int64_t reviewsCount = 0;               ///< how many have rated it
  std::vector<std::string> categories;         ///< of its store
  std::string appDeveloper;                    ///< who makes it
  std::string appDescription;                  ///< what it is, in a sentence or more
  std::string appIconURL;                      ///< where the service keeps its icon
  std::string trackingURL;                     ///< where a tap on the call to action leads
  std::optional<std::string> appIconFilePath;  ///< where precaching saved the icon; none if it did not
  /// Pictures and videos, as the service orders them; none is null.
  std::vector<std::shared_ptr<VantoriumNativeAdAsset>> assets;
  std::string privacyPolicyURL;       ///< the advertiser's policy
  std::string privacyPolicyImageURL;  ///< the mark that leads there
  std::string callToActionText;       ///< for the button, "Install" for example
  std::string impressionID;           ///< for the `reportNativeAd…` functions
  /// Set by the views when they report; an application that reports by itself may use them likewise.
  bool isImpressionReported = false;
  bool isClickReported = false;       ///< likewise
  bool isVideoStartReported = false;  ///< likewise
  bool isVideoEndReported = false;    ///< likewise
  std::string placementID;            ///< the ad was fetched for

  /// The picture in the file at `appIconFilePath`; as `VantoriumNativeAdAsset::image`.
  const std::shared_ptr<const ui::Image>& appIconImage() const;

 private:
  friend class NativeAdController;
  std::shared_ptr<const void> files_;  // keeps the files that precaching saved
  mutable std::optional<std::shared_ptr<const ui::Image>> appIconImage_;
};

}  // namespace vantorium
