/* A kiosk in C: visitors watch a video for a free coffee, and see a native ad meanwhile.

     c_kiosk [URL of a local ad service] */
#include <vantorium/gtk.h>

typedef struct {
  const char* service; /* another ad service than the real one; null for none */
  vantorium_host* host;
  vantorium_delegate* delegate;
  GtkWidget* column;
  GtkWidget* button;
  GtkWidget* status;
} kiosk;

static void warn_if(const char* what, vantorium_error* error) {
  if (error) g_warning("%s: %s", what, vantorium_error_text(error));
}

/* Completions and delegate calls come on the main thread, in GTK's main loop. */
static void did_precache(void* user_data, const char* placement) {
  kiosk* self = user_data;
  if (g_str_equal(placement, "rewarded-main")) gtk_widget_set_sensitive(self->button, TRUE);
}

static void did_receive_reward(void* user_data, const char* placement, int64_t amount) {
  kiosk* self = user_data;
  (void)placement;
  (void)amount;
  gtk_label_set_text(GTK_LABEL(self->status), "Thank you! Your coffee is on its way.");
}

static void did_show(void* user_data, bool success, vantorium_error* error) {
  kiosk* self = user_data;
  (void)success;
  warn_if("show", error);
  gtk_widget_set_sensitive(self->button, vantorium_is_campaign_ready("rewarded-main"));
}

static void watch(GtkButton* button, kiosk* self) {
  (void)button;
  gtk_label_set_text(GTK_LABEL(self->status), "");
  vantorium_show_campaign("rewarded-main", NULL, did_show, self, NULL);
}

static GtkWidget* label_in(GtkWidget* box, const char* style) {
  GtkWidget* label = gtk_label_new(NULL);
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
  gtk_widget_add_css_class(label, style);
  gtk_box_append(GTK_BOX(box), label);
  return label;
}

/* Every native ad is marked as one, and has the icon that leads to its privacy policy. */
static GtkWidget* mark_in(GtkWidget* box) {
  GtkWidget* line = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 6);
  GtkWidget* privacy = gtk_image_new();
  gtk_label_set_text(GTK_LABEL(label_in(line, "caption")), "Advertisement");
  gtk_image_set_pixel_size(GTK_IMAGE(privacy), 16);
  gtk_box_append(GTK_BOX(line), privacy);
  gtk_box_append(GTK_BOX(box), line);
  return privacy;
}

/* A row with an icon, three lines of text and a button, each connected to the outlet of its name. */
static GtkWidget* make_row(vantorium_host* host) {
  GtkWidget* row = vantorium_gtk_native_ad_view_new(host, GTK_ORIENTATION_HORIZONTAL, 12);
  GtkWidget* icon = gtk_image_new();
  GtkWidget* texts = gtk_box_new(GTK_ORIENTATION_VERTICAL, 2);
  GtkWidget* button = gtk_button_new();
  gtk_image_set_pixel_size(GTK_IMAGE(icon), 64);
  gtk_widget_set_hexpand(texts, TRUE);
  gtk_widget_set_valign(texts, GTK_ALIGN_CENTER);
  gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
  gtk_box_append(GTK_BOX(row), icon);
  gtk_box_append(GTK_BOX(row), texts);
  gtk_box_append(GTK_BOX(row), button);
  vantorium_gtk_native_ad_view_connect(row, "privacyPolicyImageView", mark_in(texts));
  vantorium_gtk_native_ad_view_connect(row, "iconImageView", icon);
  vantorium_gtk_native_ad_view_connect(row, "appNameLabel", label_in(texts, "heading"));
  vantorium_gtk_native_ad_view_connect(row, "appDeveloperLabel", label_in(texts, "dim-label"));
  vantorium_gtk_native_ad_view_connect(row, "callToActionButton", button);
  return row;
}

static void did_fill(void* user_data, bool success, vantorium_error* error) {
  (void)user_data;
  (void)success;
  warn_if("native ad", error);
}

static void did_precache_native(void* user_data, vantorium_native_ad* const* ads, size_t count,
                                vantorium_error* error) {
  kiosk* self = user_data;
  warn_if("native ads", error);
  for (size_t index = 0; index < count; ++index) {
    GtkWidget* row = make_row(self->host);
    vantorium_native_ad_view* view = vantorium_gtk_native_ad_view_get_view(row);
    gtk_box_append(GTK_BOX(self->column), row);
    vantorium_populate_native_ad_view(view, ads[index], NULL, 0, did_fill, self, NULL);
    vantorium_release(view);
  }
}

static void did_configure(void* user_data, bool success, vantorium_error* error) {
  warn_if("configure", error);
  if (success) vantorium_precache_native_ads("native-row", NULL, NULL, did_precache_native, user_data, NULL);
}

static void build_window(kiosk* self, GtkApplication* app) {
  GtkWidget* window = gtk_application_window_new(app);
  self->column = gtk_box_new(GTK_ORIENTATION_VERTICAL, 24);
  self->button = gtk_button_new_with_label("Watch a video for a free coffee");
  self->status = gtk_label_new("");
  gtk_widget_set_sensitive(self->button, FALSE); /* until there is a video */
  gtk_widget_set_margin_start(self->column, 24);
  gtk_widget_set_margin_end(self->column, 24);
  gtk_widget_set_margin_top(self->column, 24);
  gtk_box_append(GTK_BOX(self->column), self->button);
  gtk_box_append(GTK_BOX(self->column), self->status);
  g_signal_connect(self->button, "clicked", G_CALLBACK(watch), self);
  gtk_window_set_default_size(GTK_WINDOW(window), 480, 800);
  gtk_window_set_title(GTK_WINDOW(window), "Coffee");
  gtk_window_set_child(GTK_WINDOW(window), self->column);
  vantorium_gtk_attach(self->host, GTK_WINDOW(window)); /* ads cover this window's content */
  gtk_window_present(GTK_WINDOW(window));
}

static void activate(GtkApplication* app, kiosk* self) {
  const vantorium_gtk_host_options options = {.size = sizeof options,
                                              .application_id = "org.example.Coffee",
                                              .treat_loopback_as_online = self->service != NULL};
  const vantorium_delegate_methods methods = {
      .size = sizeof methods, .did_precache = did_precache, .did_receive_reward = did_receive_reward};
  self->host = vantorium_gtk_host_new(&options);
  if (!vantorium_set_host(self->host) ||
      (self->service && !vantorium_set_developer_settings(self->service, self->service, NULL))) {
    g_printerr("c_kiosk: %s\n", vantorium_error_text(vantorium_last_error()));
    g_application_quit(G_APPLICATION(app));
    return;
  }
  self->delegate = vantorium_delegate_new(&methods, self, NULL); /* the SDK holds it weakly */
  vantorium_set_delegate(self->delegate);
  build_window(self, app);
  vantorium_configure("your-app-id", NULL, NULL, did_configure, self, NULL);
}

int main(int argc, char** argv) {
  kiosk self = {.service = argc > 1 ? argv[1] : NULL};
  GtkApplication* app = gtk_application_new("org.example.Coffee", G_APPLICATION_NON_UNIQUE);
  g_signal_connect(app, "activate", G_CALLBACK(activate), &self);
  const int status = g_application_run(G_APPLICATION(app), 1, argv);
  vantorium_shutdown();
  vantorium_release(self.delegate);
  vantorium_release(self.host);
  g_object_unref(app);
  return status;
}
