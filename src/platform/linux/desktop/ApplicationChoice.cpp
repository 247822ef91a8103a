#include "platform/linux/desktop/ApplicationChoice.h"

#include "async/Future.h"
#include "platform/linux/glib/Connection.h"

#include <memory>

namespace ondrel::platform::desktop {

namespace {

// On screen for as long as this object lives.
class ChooserDialog {
 public:
  ChooserDialog(GtkWindow* parent, GFile* file)
      : dialog_(glib::share(gtk_app_chooser_dialog_new(
            parent, static_cast<GtkDialogFlags>(GTK_DIALOG_MODAL | GTK_DIALOG_DESTROY_WITH_PARENT), file))) {}
  ChooserDialog(const ChooserDialog&) = delete;
  ChooserDialog& operator=(const ChooserDialog&) = delete;
  ~ChooserDialog() { gtk_window_destroy(GTK_WINDOW(dialog_.get())); }

  async::Future<int> present() {
    auto [resolver, future] = async::makeFuture<int>();
    const auto answer = std::make_shared<async::Resolver<int>>(std::move(resolver));
    response_ = glib::connect<void(GtkDialog*, int)>(dialog_.get(), "response",
                                                     [answer](GtkDialog*, int id) { answer->resolve(id); });
    destroyed_ = glib::connect<void(GtkWidget*)>(
        dialog_.get(), "destroy", [answer](GtkWidget*) { answer->resolve(GTK_RESPONSE_DELETE_EVENT); });
    gtk_window_present(GTK_WINDOW(dialog_.get()));
    return std::move(future);
  }
  glib::Ref<GAppInfo> chosen() const {
    return glib::adopt(gtk_app_chooser_get_app_info(GTK_APP_CHOOSER(dialog_.get())));
  }

 private:
  glib::Ref<GtkWidget> dialog_;
  glib::Connection response_;
  glib::Connection destroyed_;
};

} // namespace

async::Task<glib::Ref<GAppInfo>> chooseApplication(glib::Ref<GtkWindow> parent, glib::Ref<GFile> file) {
  ChooserDialog dialog(parent.get(), file.get());
  const auto response = co_await dialog.present();
  if (response != GTK_RESPONSE_OK)
    co_return nullptr;
  co_return dialog.chosen();
}

} // namespace ondrel::platform::desktop
