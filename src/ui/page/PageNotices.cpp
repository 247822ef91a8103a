#include "ui/page/PageNotices.h"

#include "ui/widgets/Toast.h"

namespace ondrel::ui {

namespace {
constexpr guint secondsToRead = 8;
constexpr guint secondsToAct = 20;
} // namespace

PageNotices::PageNotices(GtkWidget* child) : overlay_(glib::share(adw_toast_overlay_new())) {
  adw_toast_overlay_set_child(ADW_TOAST_OVERLAY(overlay_.get()), child);
}

void PageNotices::show(const web::PageNotice& notice) {
  clicked_ = {};
  // One that says the same stays, so that a page can't make the line flicker. What has a time of its own has
  // all of it.
  const bool isShown = toast_ && notice.time.count() == 0 && text_ == notice.text;
  if (!isShown) {
    if (const auto former = std::exchange(toast_, nullptr))
      adw_toast_dismiss(former.get());
    toast_ = makeToast(notice.text);
    text_ = notice.text;
    const auto usual = notice.button.empty() ? secondsToRead : secondsToAct;
    const auto time = static_cast<guint>(notice.time.count());
    adw_toast_set_timeout(toast_.get(), time > 0 ? time : usual);
    dismissed_ = glib::connect<void(AdwToast*)>(toast_.get(), "dismissed", [this](AdwToast* toast) {
      if (toast_.get() == toast)
        toast_ = nullptr;
    });
  }
  adw_toast_set_button_label(toast_.get(), notice.button.empty() ? nullptr : notice.button.c_str());
  if (notice.act)
    clicked_ = glib::connect<void(AdwToast*)>(toast_.get(), "button-clicked",
                                              [act = notice.act](AdwToast*) { act(); });
  if (!isShown)
    adw_toast_overlay_add_toast(ADW_TOAST_OVERLAY(overlay_.get()), ADW_TOAST(g_object_ref(toast_.get())));
}

} // namespace ondrel::ui
