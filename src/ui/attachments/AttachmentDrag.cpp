#include "ui/attachments/AttachmentDrag.h"

#include "async/Future.h"
#include "base/Translation.h"

#include <utility>

namespace ondrel::ui {

// The file that is on its way, and those who wait for it.
struct DraggedFile {
  bool isOver = false; // the fetching, either way
  std::optional<std::string> path;
  struct Waiter {
    glib::Ref<GTask> task;
    glib::Ref<GOutputStream> stream;
  };
  std::vector<Waiter> waiters;

  void add(Waiter waiter) {
    if (isOver)
      answer(waiter);
    else
      waiters.push_back(std::move(waiter));
  }
  void end(std::optional<std::string> result) {
    if (std::exchange(isOver, true))
      return;
    path = std::move(result);
    for (const auto& waiter : std::exchange(waiters, {}))
      answer(waiter);
  }

 private:
  void answer(const Waiter& waiter) const;
};

namespace {

constexpr const char* listOfFiles = "text/uri-list"; // RFC 2483

struct Provider {
  GdkContentProvider parent;
  std::shared_ptr<DraggedFile>* file;
};
struct ProviderClass {
  GdkContentProviderClass parent;
};
G_DEFINE_TYPE(Provider, ondrel_dragged_file_provider, GDK_TYPE_CONTENT_PROVIDER)

void ondrel_dragged_file_provider_init(Provider*) {
}

void ondrel_dragged_file_provider_class_init(ProviderClass* type) {
  G_OBJECT_CLASS(type)->finalize = [](GObject* object) {
    delete reinterpret_cast<Provider*>(object)->file;
    G_OBJECT_CLASS(ondrel_dragged_file_provider_parent_class)->finalize(object);
  };
  auto* provider = GDK_CONTENT_PROVIDER_CLASS(type);
  provider->ref_formats = [](GdkContentProvider*) {
    const char* types[] = {listOfFiles};
    return gdk_content_formats_new(types, 1);
  };
  provider->write_mime_type_async = [](GdkContentProvider* self, const char*, GOutputStream* stream, int,
                                       GCancellable* cancellable, GAsyncReadyCallback callback,
                                       gpointer data) {
    auto task = glib::adopt(g_task_new(self, cancellable, callback, data));
    (*reinterpret_cast<Provider*>(self)->file)->add({std::move(task), glib::share(stream)});
  };
  provider->write_mime_type_finish = [](GdkContentProvider*, GAsyncResult* result,
                                        GError** error) -> gboolean {
    return g_task_propagate_boolean(G_TASK(result), error);
  };
}

async::Task<void> fetch(attachments::FilesViewModel& files, DraggedCopies& copies,
                        jmap::AttachmentInfo attachment, std::shared_ptr<DraggedFile> file) {
  const auto name = attachment.name;
  const auto path = co_await files.fetchFile(std::move(attachment));
  file->end(path ? std::optional(copies.add(*path, name)) : std::nullopt);
}

glib::Ref<GdkPaintable> iconFor(GtkWidget* widget, const std::string& mimeType) {
  const glib::CString type(g_content_type_from_mime_type(mimeType.c_str()));
  auto icon = glib::adopt(g_content_type_get_icon(type ? type.get() : "application/octet-stream"));
  auto* theme = gtk_icon_theme_get_for_display(gtk_widget_get_display(widget));
  if (!gtk_icon_theme_has_gicon(theme, icon.get())) // themes may know no types
    icon = glib::adopt(g_themed_icon_new("text-x-generic-symbolic"));
  constexpr int side = 48;
  return glib::adopt(GDK_PAINTABLE(
      gtk_icon_theme_lookup_by_gicon(theme, icon.get(), side, gtk_widget_get_scale_factor(widget),
                                     gtk_widget_get_direction(widget), GtkIconLookupFlags(0))));
}

} // namespace

void DraggedFile::answer(const Waiter& waiter) const {
  if (!path) {
    g_task_return_new_error(waiter.task.get(), G_IO_ERROR, G_IO_ERROR_FAILED,
                            "The file could not be fetched");
    return;
  }
  const glib::CString uri(g_filename_to_uri(path->c_str(), nullptr, nullptr));
  // The task keeps the text until it is written.
  auto* text = g_strconcat(uri.get(), "\r\n", nullptr);
  g_task_set_task_data(waiter.task.get(), text, g_free);
  g_output_stream_write_all_async(
      waiter.stream.get(), text, std::char_traits<char>::length(text), G_PRIORITY_DEFAULT,
      g_task_get_cancellable(waiter.task.get()),
      [](GObject* stream, GAsyncResult* result, gpointer data) {
        const auto task = glib::adopt(static_cast<GTask*>(data));
        glib::Error error;
        if (g_output_stream_write_all_finish(G_OUTPUT_STREAM(stream), result, nullptr, error.out()))
          g_task_return_boolean(task.get(), TRUE);
        else
          g_task_return_error(task.get(), g_error_copy(error.raw()));
      },
      g_object_ref(waiter.task.get()));
}

glib::Ref<GdkContentProvider> AttachmentDrag::provider(const jmap::AttachmentInfo& attachment) {
  const auto file = std::make_shared<DraggedFile>();
  std::erase_if(files_, [](const auto& each) { return each.expired(); });
  files_.push_back(file);
  scope_.spawn(fetch(viewModel_, *copies_, attachment, file));
  auto* made = static_cast<Provider*>(g_object_new(ondrel_dragged_file_provider_get_type(), nullptr));
  made->file = new std::shared_ptr(file);
  return glib::adopt(GDK_CONTENT_PROVIDER(made));
}

AttachmentDrag::AttachmentDrag(GtkWidget* view, attachments::FilesViewModel& viewModel,
                               std::shared_ptr<DraggedCopies> copies, RowAt rowAt)
    : view_(view), viewModel_(viewModel), copies_(std::move(copies)) {
  auto* source = gtk_drag_source_new();
  gtk_drag_source_set_actions(source, GDK_ACTION_COPY);
  connections_.push_back(glib::connect<GdkContentProvider*(GtkDragSource*, double, double)>(
      source, "prepare",
      [this, rowAt = std::move(rowAt)](GtkDragSource* drag, double x, double y) -> GdkContentProvider* {
        const auto* attachment = rowAt(x, y);
        if (!attachment)
          return nullptr;
        gtk_drag_source_set_icon(drag, iconFor(view_, attachment->type).get(), 0, 0);
        return provider(*attachment).release();
      }));
  connections_.push_back(glib::connect<gboolean(GtkDragSource*, GdkDrag*, GdkDragCancelReason)>(
      source, "drag-cancel", [this](GtkDragSource*, GdkDrag* drag, GdkDragCancelReason reason) -> gboolean {
        // One that ends where it began is one that nobody wanted.
        auto* surface = gtk_native_get_surface(gtk_widget_get_native(view_));
        if (reason != GDK_DRAG_CANCEL_USER_CANCELLED &&
            !gdk_surface_get_device_position(surface, gdk_drag_get_device(drag), nullptr, nullptr, nullptr))
          tellOfImpatience();
        return FALSE;
      }));
  source_ = glib::share(GTK_EVENT_CONTROLLER(source));
  gtk_widget_add_controller(view, GTK_EVENT_CONTROLLER(g_object_ref(source)));
}

// Some programs want to see what is dragged before they take it, others wait some seconds for it.
void AttachmentDrag::tellOfImpatience() {
  const auto file = files_.empty() ? nullptr : files_.back().lock();
  if (!file || file->isOver)
    return;
  viewModel_.errorMessage.set(std::nullopt); // the same again is told too
  viewModel_.errorMessage.set(
      base::tr("The file was not here yet, and nothing has taken it. Drag it once more in a moment."));
}

AttachmentDrag::~AttachmentDrag() {
  connections_.clear();
  gtk_widget_remove_controller(view_, source_.get());
  for (const auto& each : files_)
    if (const auto file = each.lock())
      file->end(std::nullopt); // nobody fetches it any more
}

} // namespace ondrel::ui
