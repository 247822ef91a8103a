#include "ui/attachments/FilesWindow.h"

#include "base/Translation.h"
#include "platform/Application.h"
#include "platform/UserDefaults.h"
#include "platform/Window.h"
#include "ui/widgets/WindowFrameAutosave.h"

namespace ondrel::ui {

namespace {

constexpr const char* frameName = "files-window";

} // namespace

FilesWindow::FilesWindow(Services services) : services_(std::move(services)) {
  subscriptions_.push_back(services_.application.windowWillClose.subscribe([this](const auto& window) {
    if (window_ && window == window_)
      forget();
  }));
  subscriptions_.push_back(services_.application.aboutToQuit.subscribe([this] { keepFrame(); }));
}

void FilesWindow::show() {
  const bool isNew = !window_;
  if (isNew)
    open();
  window_->present();
  if (isNew)
    view_->takeKeyboard();
}

void FilesWindow::open() {
  platform::WindowAttributes attributes;
  attributes.contentWidth = 760;
  attributes.contentHeight = 680;
  attributes.identifier = "files";
  attributes.standalone = true;
  window_ = services_.application.makeWindow(attributes);
  window_->setTitle(base::tr("Attached Files"));
  window_->setTabbingMode(platform::TabbingMode::disallowed);
  if (const auto frame = savedFrame(services_.defaults, frameName))
    window_->setFrame(*frame);
  view_.emplace(services_.makeViewModel(window_), FilesView::Services{.formatting = services_.formatting,
                                                                      .preview = services_.preview,
                                                                      .launcher = services_.launcher,
                                                                      .close =
                                                                          [this] {
                                                                            const auto window = window_;
                                                                            window->requestClose();
                                                                          },
                                                                      .dragged = dragged_});
  window_->setContent({view_->widget()});
}

GtkWindow* FilesWindow::native() const {
  auto* root = view_ ? gtk_widget_get_root(view_->widget()) : nullptr;
  return root ? GTK_WINDOW(root) : nullptr;
}

void FilesWindow::keepFrame() {
  if (window_)
    saveFrame(services_.defaults, frameName, window_->frame());
}

void FilesWindow::forget() {
  keepFrame();
  view_.reset();
  window_.reset();
}

} // namespace ondrel::ui
