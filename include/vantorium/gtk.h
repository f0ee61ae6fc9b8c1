#ifndef VANTORIUM_GTK_H
#define VANTORIUM_GTK_H

#include <gtk/gtk.h>

#include <vantorium/vantorium.h>

/** @file
 *  The GTK 4 host for applications written in C, or in another language with GTK's own widgets. Everything
 *  here is for the main thread; hosts and views given elsewhere are refused. */

#ifdef __cplusplus
extern "C" {
#endif

/** What a host is told of the application. Fields are added at the end, beyond what is its size today. */
typedef struct vantorium_gtk_host_options {
  size_t size;                     /**< `sizeof(vantorium_gtk_host_options)`, so that fields can be added */
  const char* application_id;      /**< reverse-domain name: names its folders, and is told to the service */
  const char* application_version; /**< told to the service; null for none */
  bool advertising_tracking_enabled; /**< whether the user agreed to be recognised by advertisers */
  const char* store_url; /**< the store's page of a product, "{id}" standing for it; null for the usual one */
  bool treat_loopback_as_online; /**< for developers: an ad service on this machine is enough to be online */
} vantorium_gtk_host_options;

/** Makes the host: see `vantorium::gtk::makeHost`. GTK must be initialised (inside or after `activate` of a
 *  GtkApplication). Callbacks run in the default main context. Null on failure. */
VANTORIUM_API vantorium_host* vantorium_gtk_host_new(const vantorium_gtk_host_options* options);
/** Lets ads be shown in the window, covering its content but not its title bar. Call it once, before the
 *  window is shown. From then on the window's child is a GtkOverlay that holds the application's own
 *  content. False on failure. */
VANTORIUM_API bool vantorium_gtk_attach(vantorium_host* host, GtkWindow* window);

/** How the device is held, seen from its user. */
typedef int32_t vantorium_gtk_device_orientation;
/** Its values. */
enum vantorium_gtk_device_orientations {
  VANTORIUM_GTK_DEVICE_UNKNOWN = 0,              /**< not known */
  VANTORIUM_GTK_DEVICE_PORTRAIT = 1,             /**< upright */
  VANTORIUM_GTK_DEVICE_PORTRAIT_UPSIDE_DOWN = 2, /**< its top points down */
  VANTORIUM_GTK_DEVICE_LANDSCAPE_LEFT = 3,       /**< its top points to the left */
  VANTORIUM_GTK_DEVICE_LANDSCAPE_RIGHT = 4,      /**< its top points to the right */
  VANTORIUM_GTK_DEVICE_FACE_UP = 5,              /**< it lies on its back */
  VANTORIUM_GTK_DEVICE_FACE_DOWN = 6             /**< it lies on its face */
};
/** For developers: holds the device this way, whatever its sensor says. False on failure. */
VANTORIUM_API bool vantorium_gtk_set_device_orientation(vantorium_host* host,
                                                        vantorium_gtk_device_orientation orientation);

/** A native ad: a GtkBox that holds the application's own widgets, some of which are connected to the ad's
 *  outlets. As with every new widget its one reference is floating: put it into a container. Null on
 *  failure. */
VANTORIUM_API GtkWidget* vantorium_gtk_native_ad_view_new(vantorium_host* host, GtkOrientation orientation,
                                                          int spacing);
/** Likewise, of a GtkBox of an interface file, which it turns into a native ad: every object of the file
 *  whose ID is the name of an outlet is connected; one that does not fit is left alone, with a warning on
 *  the console. To be called once for a box that no other code of gtkmm knows. Returns the box, whose
 *  references stay as they were; null on failure. */
VANTORIUM_API GtkWidget* vantorium_gtk_native_ad_view_from_box(vantorium_host* host, GtkBox* box,
                                                               GtkBuilder* builder);
/** Connects a widget inside the box to the outlet, in place of another: `appNameLabel`,
 *  `appDeveloperLabel`, `appDescriptionLabel` and `reviewsLabel` take a GtkLabel; `iconImageView`,
 *  `imageView` and `privacyPolicyImageView` a GtkPicture or GtkImage; `callToActionButton` a GtkButton;
 *  `mediaView` and `ratingView` an empty GtkBox. All are optional; see `vantorium::gtk::NativeAdView`.
 *  False when the widget does not fit. */
VANTORIUM_API bool vantorium_gtk_native_ad_view_connect(GtkWidget* native_ad_view, const char* outlet,
                                                        GtkWidget* widget);
/** What `vantorium_populate_native_ad_view` fills, as a reference of the caller's. Null on failure. */
VANTORIUM_API vantorium_native_ad_view* vantorium_gtk_native_ad_view_get_view(GtkWidget* native_ad_view);
/** The ad shown, as a reference of the caller's; null for none. */
VANTORIUM_API vantorium_native_ad* vantorium_gtk_native_ad_view_get_ad(GtkWidget* native_ad_view);
/** Plays the video, if there is one. False on failure. */
VANTORIUM_API bool vantorium_gtk_native_ad_view_play_video(GtkWidget* native_ad_view);
/** Pauses it. False on failure. */
VANTORIUM_API bool vantorium_gtk_native_ad_view_pause_video(GtkWidget* native_ad_view);
/** Replaces the stars of the connected `ratingView` by pictures in these files, from the next filling on.
 *  False on failure. */
VANTORIUM_API bool vantorium_gtk_native_ad_view_set_star_images(GtkWidget* native_ad_view,
                                                                const char* empty_path,
                                                                const char* half_full_path,
                                                                const char* full_path);

#ifdef __cplusplus
}
#endif

#endif
