#include "ui/preview/MediaPart.h"

#include "base/Log.h"
#include "ui/widgets/Widgets.h"

#include <adwaita.h>
#include <gst/gst.h>

#include <string_view>

namespace ondrel::ui {

namespace {

constexpr base::Logger logger("ui");

// Sources of other addresses than files, and what reads lists of addresses and has a client of its own.
bool readsFromElsewhere(GstElementFactory* factory) {
  const char* told = gst_element_factory_get_metadata(factory, GST_ELEMENT_METADATA_KLASS);
  const std::string_view kind = told ? told : "";
  if (kind.contains("Adaptive") || kind.contains("Network"))
    return true;
  if (gst_element_factory_get_uri_type(factory) != GST_URI_SRC)
    return false;
  const gchar* const* protocols = gst_element_factory_get_uri_protocols(factory);
  for (; protocols && *protocols; ++protocols)
    if (std::string_view(*protocols) != "file")
      return true;
  return false;
}

// Playlists and films may name addresses as their content, which would tell a stranger that they were looked
// at. This process plays files alone: all that could fetch from elsewhere is taken out.
void removeSources() {
  static bool isDone = false;
  if (isDone || !gst_init_check(nullptr, nullptr, nullptr))
    return;
  isDone = true;
  auto* registry = gst_registry_get();
  auto* factories = gst_registry_get_feature_list(registry, GST_TYPE_ELEMENT_FACTORY);
  for (auto* each = factories; each; each = each->next) {
    auto* factory = GST_ELEMENT_FACTORY(each->data);
    if (readsFromElsewhere(factory))
      gst_registry_remove_feature(registry, GST_PLUGIN_FEATURE(factory));
  }
  gst_plugin_feature_list_free(factories);
}

glib::Ref<GtkMediaStream> streamOf(const std::string& path) {
  removeSources();
  return glib::adopt(gtk_media_file_new_for_filename(path.c_str()));
}

} // namespace

bool canPlayMedia() {
  static const bool can = [] {
    const auto file = glib::adopt(gtk_media_file_new());
    return std::string_view(G_OBJECT_TYPE_NAME(file.get())) != "GtkNoMediaFile";
  }();
  return can;
}

MediaPart::MediaPart(const FileCard::Options& card, std::function<void()> failed)
    : stream_(streamOf(card.path)), place_(glib::share(adw_bin_new())),
      video_(gtk_video_new_for_media_stream(stream_.get())) {
  gtk_widget_set_name(place_.get(), "preview-media");
  gtk_widget_set_vexpand(place_.get(), TRUE);
  setAccessibleLabel(video_, card.name);
  adw_bin_set_child(ADW_BIN(place_.get()), video_);
  prepared_ = glib::onNotify(stream_.get(), "prepared", [this, card] {
    if (!card_ && gtk_media_stream_is_prepared(stream_.get()) && !gtk_media_stream_has_video(stream_.get()))
      showSound(card);
  });
  error_ = glib::onNotify(stream_.get(), "error", [this, failed = std::move(failed)] {
    if (const auto* error = gtk_media_stream_get_error(stream_.get())) {
      logger.error("A file can't be played: {}", base::Private{error->message});
      failed();
    }
  });
  gtk_media_stream_play(stream_.get());
}

MediaPart::~MediaPart() {
  prepared_.disconnect();
  error_.disconnect();
  gtk_media_stream_pause(stream_.get());
  if (!card_)
    gtk_video_set_media_stream(GTK_VIDEO(video_), nullptr);
}

void MediaPart::showSound(FileCard::Options card) {
  card.controls = gtk_media_controls_new(stream_.get());
  setAccessibleLabel(card.controls, card.name);
  card_.emplace(card);
  const bool hadFocus = gtk_widget_get_focus_child(place_.get()) != nullptr;
  adw_bin_set_child(ADW_BIN(place_.get()), card_->widget());
  if (hadFocus)
    giveFocus(card_->focus());
}

} // namespace ondrel::ui
