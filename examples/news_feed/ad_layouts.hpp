#pragma once

#include <gtkmm.h>

#include <vantorium/gtk_native_ads.hpp>

/// Arrangements of widgets that an ad is put into. In each of them texts may be missing, long or written from
/// right to left, and the ad is marked as one and leads to its privacy policy.
struct AdLayout {
  Gtk::Widget* widget;                 ///< managed, with the view in it
  vantorium::gtk::NativeAdView* view;  ///< its outlets are connected
};

/// A video over everything else: laid out in video_ad.ui.
AdLayout makeVideoLayout(vantorium::Host& host);
/// Pictures instead, one or two side by side: laid out in code.
AdLayout makePictureLayout(vantorium::Host& host, bool hasTwo);
/// Icon, name, rating and button, as small as a story.
AdLayout makeRowLayout(vantorium::Host& host);
