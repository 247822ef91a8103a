#include "ui/preview/PreviewWindow.h"

#include "async/sleep.h"
#include "base/Log.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "platform/Application.h"
#include "platform/UriLauncher.h"
#include "platform/documents/DocumentDecoder.h"
#include "ui/preview/FileCard.h"
#include "ui/preview/MediaPart.h"
#include "ui/preview/PagesPart.h"
#include "ui/preview/TextPart.h"
#include "ui/widgets/Widgets.h"
#include "ui/widgets/WindowFrameAutosave.h"

#include <adwaita.h>

#include <algorithm>
#include <utility>

namespace ondrel::ui {

namespace {

constexpr base::Logger logger("ui");
constexpr const char* frameName = "preview-window";
constexpr int smallestWidth = 360;
constexpr int smallestHeight = 240;
constexpr int spinnerSize = 32;

GtkWidget* spinner() {
  auto* widget = gtk_spinner_new();
  gtk_widget_set_size_request(widget, spinnerSize, spinnerSize);
  gtk_widget_set_halign(widget, GTK_ALIGN_CENTER);
  gtk_widget_set_valign(widget, GTK_ALIGN_CENTER);
  gtk_spinner_start(GTK_SPINNER(widget));
  setAccessibleLabel(widget, base::tr("Loading Preview"));
  return widget;
}

// The toolkit's title wants room for five characters, which large letters don't leave in a narrow window.
void shorten(GtkWidget* title) {
  if (GTK_IS_LABEL(title))
    gtk_label_set_width_chars(GTK_LABEL(title), 1);
  for (auto* child = gtk_widget_get_first_child(title); child; child = gtk_widget_get_next_sibling(child))
    shorten(child);
}

const char* sentence(platform::DecodeError::Kind kind, PreviewKind shown) {
  using Kind = platform::DecodeError::Kind;
  switch (kind) {
  case Kind::damaged:
    // TRANSLATORS: "it" is a file
    return shown == PreviewKind::pdf ? base::tr("It may be damaged, or protected by a password.")
                                     // TRANSLATORS: "it" is a file
                                     : base::tr("It may be damaged, or of a kind that is not known here.");
  case Kind::tooLarge:
    // TRANSLATORS: "it" is a file
    return base::tr("It is too large to be shown here.");
  case Kind::timedOut:
    // TRANSLATORS: "it" is a file
    return base::tr("It takes too long to be drawn.");
  case Kind::crashed:
    // TRANSLATORS: "it" is a file
    return base::tr("It is damaged: reading it has failed.");
  case Kind::unavailable:
    break;
  }
  return base::tr("The file can't be read. Close the preview and open it again.");
}

} // namespace

PreviewWindow::PreviewWindow(Services services) : services_(services) {
  subscriptions_.push_back(services_.application.windowWillClose.subscribe([this](const auto& window) {
    if (window_ && window == window_)
      forget();
  }));
  subscriptions_.push_back(services_.application.aboutToQuit.subscribe([this] { keepFrame(); }));
}

void PreviewWindow::show(const Item& item, GtkWindow* parent, std::function<void(int step)> neighbour) {
  if (!window_)
    open(parent);
  neighbour_ = std::move(neighbour);
  item_ = item;
  item_.mimeType = likelyType(item.mimeType, item.name);
  setTitle(item.name);
  gtk_widget_set_sensitive(openButton_, TRUE);
  loading_.cancel();
  loading_ = scope_.spawn(load(item_));
  // A neighbour that comes late takes nobody's keyboard away.
  if (!std::exchange(isAwaited_, false))
    window_->present();
}

void PreviewWindow::showLoading(const std::string& name) {
  if (!window_)
    return;
  loading_.cancel();
  leavePart();
  isAwaited_ = true;
  setTitle(name);
  gtk_stack_set_visible_child_name(GTK_STACK(stack_), "loading");
}

void PreviewWindow::showError(const std::string& text) {
  if (!window_)
    return;
  loading_.cancel();
  leavePart();
  adw_status_page_set_description(ADW_STATUS_PAGE(errorPage_), base::escapedMarkup(text).c_str());
  gtk_stack_set_visible_child_name(GTK_STACK(stack_), "error");
}

void PreviewWindow::close() {
  if (const auto window = window_)
    window->close();
}

void PreviewWindow::open(GtkWindow* parent) {
  platform::WindowAttributes attributes;
  attributes.contentWidth = 760;
  attributes.contentHeight = 680;
  attributes.identifier = "preview";
  attributes.standalone = true;
  window_ = services_.application.makeWindow(attributes);
  window_->setTabbingMode(platform::TabbingMode::disallowed);
  if (const auto frame = savedFrame(services_.defaults, frameName))
    window_->setFrame(*frame);
  content_ = makeContent();
  window_->setContent({content_.get()});
  // Over the window with the list, which gets the keyboard back when this one goes.
  if (auto* root = gtk_widget_get_root(content_.get()); parent && GTK_IS_WINDOW(root))
    gtk_window_set_transient_for(GTK_WINDOW(root), parent);
}

void PreviewWindow::keepFrame() {
  if (window_)
    saveFrame(services_.defaults, frameName, window_->frame());
}

void PreviewWindow::forget() {
  keepFrame();
  loading_.cancel();
  connections_.clear();
  width_.reset();
  part_.reset();
  zoom_.reset();
  problem_.reset();
  neighbour_ = nullptr;
  isAwaited_ = false;
  content_ = nullptr;
  window_.reset();
  closed.emit();
}

glib::Ref<GtkWidget> PreviewWindow::makeContent() {
  stack_ = gtk_stack_new();
  gtk_widget_set_name(stack_, "preview-content");
  gtk_widget_set_vexpand(stack_, TRUE);
  gtk_stack_add_named(GTK_STACK(stack_), spinner(), "loading");
  errorPage_ = adw_status_page_new();
  gtk_widget_set_name(errorPage_, "preview-error");
  adw_status_page_set_icon_name(ADW_STATUS_PAGE(errorPage_), "dialog-warning-symbolic");
  adw_status_page_set_title(ADW_STATUS_PAGE(errorPage_), base::tr("No Preview"));
  gtk_stack_add_named(GTK_STACK(stack_), errorPage_, "error");
  place_ = adw_bin_new();
  gtk_stack_add_named(GTK_STACK(stack_), place_, "part");

  auto* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_widget_set_name(box, "preview");
  gtk_widget_set_size_request(box, smallestWidth, smallestHeight);
  gtk_box_append(GTK_BOX(box), makeHeaderBar());
  problem_.emplace(ProblemBar::Content{.name = "preview-problem",
                                       .icon = "dialog-warning-symbolic",
                                       .dismissed = [this] { problem_->hide(); }});
  gtk_box_append(GTK_BOX(box), problem_->widget());
  gtk_box_append(GTK_BOX(box), stack_);
  gtk_box_append(GTK_BOX(box), zoom_->below());
  width_.emplace(box, [this](int width) { zoom_->setWidth(width); });
  addKeys(box);
  return glib::share(box);
}

void PreviewWindow::addButton(GtkWidget* bar, bool atStart, GtkWidget* button,
                              std::function<void()> clicked) {
  connections_.push_back(glib::connect<void(GtkButton*)>(
      button, "clicked", [clicked = std::move(clicked)](GtkButton*) { clicked(); }));
  if (atStart)
    adw_header_bar_pack_start(ADW_HEADER_BAR(bar), button);
  else
    adw_header_bar_pack_end(ADW_HEADER_BAR(bar), button);
}

GtkWidget* PreviewWindow::makeHeaderBar() {
  auto* bar = adw_header_bar_new();
  titleWidget_ = adw_window_title_new("", "");
  shorten(titleWidget_);
  adw_header_bar_set_title_widget(ADW_HEADER_BAR(bar), titleWidget_);
  // TRANSLATORS: the file before, of those in the list
  previousButton_ = toolbarButton("preview-previous", "go-previous-symbolic", base::tr("Previous"),
                                  base::tr("Previous") + std::string(readsRightToLeft() ? " [→]" : " [←]"));
  addButton(bar, true, previousButton_, [this] { step(-1); });
  // TRANSLATORS: the file after this one in the list
  nextButton_ = toolbarButton("preview-next", "go-next-symbolic", base::tr("Next"),
                              base::tr("Next") + std::string(readsRightToLeft() ? " [←]" : " [→]"));
  addButton(bar, true, nextButton_, [this] { step(1); });
  setNeighbours(false, false);
  openButton_ = toolbarButton("preview-open", "document-open-symbolic", base::tr("Open With…"),
                              base::tr("Open With…") + std::string(" (⌘O)"));
  addButton(bar, false, openButton_, [this] { openWith(); });
  zoom_.emplace([this](Zoom kind) {
    if (part_)
      part_->zoom(kind);
  });
  adw_header_bar_pack_end(ADW_HEADER_BAR(bar), zoom_->inHeader());
  return bar;
}

void PreviewWindow::setNeighbours(bool hasPrevious, bool hasNext) {
  gtk_widget_set_sensitive(previousButton_, hasPrevious);
  gtk_widget_set_sensitive(nextButton_, hasNext);
}

void PreviewWindow::step(int by) {
  const auto neighbour = neighbour_; // may be replaced by the next
  if (neighbour && gtk_widget_get_sensitive(by < 0 ? previousButton_ : nextButton_))
    neighbour(by);
}

void PreviewWindow::addKeys(GtkWidget* box) {
  auto* keys = gtk_event_controller_key_new();
  // Before the text or the film, which have uses of their own for arrows and the space bar.
  gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
  connections_.push_back(glib::connect<gboolean(GtkEventControllerKey*, guint, guint, GdkModifierType)>(
      keys, "key-pressed",
      [this](GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers) -> gboolean {
        return handleKey(key, modifiers);
      }));
  // Of the whole top-level: while a file is fetched, nothing in it has the keyboard.
  connections_.push_back(glib::onNotify(box, "root", [box, keys = glib::share(keys)]() mutable {
    if (auto* root = gtk_widget_get_root(box); root && keys)
      gtk_widget_add_controller(GTK_WIDGET(root), GTK_EVENT_CONTROLLER(keys.release()));
  }));
}

bool PreviewWindow::handleKey(guint key, GdkModifierType modifiers) {
  const auto held = modifiers & gtk_accelerator_get_default_mod_mask();
  if (held == GDK_CONTROL_MASK || held == (GDK_CONTROL_MASK | GDK_SHIFT_MASK))
    return handleControlKey(gdk_keyval_to_lower(key));
  // The plus sign may be typed with Shift.
  return (held == 0 || held == GDK_SHIFT_MASK) && handlePlainKey(gdk_keyval_to_lower(key));
}

bool PreviewWindow::handlePlainKey(guint key) {
  const auto zoom = [this](Zoom step) {
    if (part_)
      part_->zoom(step);
    return true;
  };
  switch (key) {
  case GDK_KEY_space:
    if (isControlFocused())
      return false;
    [[fallthrough]];
  case GDK_KEY_Escape: {
    const auto window = window_;
    window->requestClose();
    return true;
  }
  case GDK_KEY_Left:
    step(readsRightToLeft() ? 1 : -1);
    return true;
  case GDK_KEY_Right:
    step(readsRightToLeft() ? -1 : 1);
    return true;
  case GDK_KEY_Up:
    return part_ && part_->scroll(-1);
  case GDK_KEY_Down:
    return part_ && part_->scroll(1);
  case GDK_KEY_plus:
  case GDK_KEY_equal:
  case GDK_KEY_KP_Add:
    return zoom(Zoom::in);
  case GDK_KEY_minus:
  case GDK_KEY_KP_Subtract:
    return zoom(Zoom::out);
  case GDK_KEY_0:
  case GDK_KEY_KP_0:
    return zoom(Zoom::original);
  case GDK_KEY_f:
    return zoom(Zoom::fit);
  default:
    return false;
  }
}

bool PreviewWindow::handleControlKey(guint key) {
  switch (key) {
  case GDK_KEY_w: {
    const auto window = window_;
    window->requestClose();
    return true;
  }
  case GDK_KEY_c:
    return part_ && part_->copy();
  case GDK_KEY_a:
    return part_ && part_->selectAll();
  case GDK_KEY_o:
    openWith();
    return true;
  default: // larger and smaller as elsewhere
    return key != GDK_KEY_f && key != GDK_KEY_space && key != GDK_KEY_Escape && key != GDK_KEY_Left &&
           key != GDK_KEY_Right && key != GDK_KEY_Up && key != GDK_KEY_Down && handlePlainKey(key);
  }
}

// The space bar presses what has the keyboard.
bool PreviewWindow::isControlFocused() const {
  auto* root = gtk_widget_get_root(content_.get());
  auto* focused = root ? gtk_root_get_focus(root) : nullptr;
  return focused && (GTK_IS_BUTTON(focused) || GTK_IS_RANGE(focused));
}

void PreviewWindow::setTitle(const std::string& name) {
  problem_->hide(); // of another file
  title_ = base::shortDisplayLine(name);
  window_->setTitle(title_);
  adw_window_title_set_title(ADW_WINDOW_TITLE(titleWidget_), title_.c_str());
  gtk_widget_set_tooltip_text(titleWidget_, title_.c_str());
  adw_window_title_set_subtitle(ADW_WINDOW_TITLE(titleWidget_), "");
}

// There is no file to do anything with any more.
void PreviewWindow::leavePart() {
  setPart(nullptr);
  gtk_widget_set_sensitive(openButton_, FALSE);
}

void PreviewWindow::setPart(std::unique_ptr<PreviewPart> part) {
  const auto old = std::exchange(part_, std::move(part));
  adw_bin_set_child(ADW_BIN(place_), part_ ? part_->widget() : nullptr);
  zoom_->setUsed(part_ && part_->canZoom());
  if (!part_)
    return;
  gtk_stack_set_visible_child_name(GTK_STACK(stack_), "part");
  giveFocus(part_->focus());
}

void PreviewWindow::showCard(const std::string& note) {
  adw_window_title_set_subtitle(ADW_WINDOW_TITLE(titleWidget_), "");
  const bool isMedia = previewKind(services_.types, item_.mimeType) == PreviewKind::media;
  const bool canPlay = isMedia && note.empty() && canPlayMedia();
  setPart(std::make_unique<FileCard>(
      FileCard::Options{.path = item_.path,
                        .name = title_,
                        .mimeType = item_.mimeType,
                        .note = isMedia && note.empty() && !canPlay
                                    ? base::tr("Sound and film can't be played here on this machine.")
                                    : note,
                        // TRANSLATORS: a verb: to play sound or film
                        .action = canPlay ? base::tr("Play") : base::tr("Open With…"),
                        .act = [this, canPlay] {
                          if (canPlay)
                            play();
                          else
                            openWith();
                        }}));
}

void PreviewWindow::play() {
  const FileCard::Options card{.path = item_.path, .name = title_, .mimeType = item_.mimeType};
  setPart(std::make_unique<MediaPart>(card, [this] {
    // TRANSLATORS: "it" is a file
    showCard(base::tr(
        "It can't be played here. It may be damaged, or this machine has nothing that plays its format."));
  }));
}

void PreviewWindow::openWith() {
  if (gtk_widget_get_sensitive(openButton_) && opening_.done())
    opening_ = scope_.spawn(askWhatOpens(item_.path));
}

async::Task<void> PreviewWindow::askWhatOpens(std::string path) {
  const auto opened = co_await services_.launcher.openFileWith(std::move(path), {content_.get()});
  if (!opened && window_)
    problem_->show(base::tr("The File Could Not Be Opened"), opened.error());
}

void PreviewWindow::tellFailure(const platform::DecodeError& error) {
  logger.error("No preview: {}", error.description);
  showCard(sentence(error.kind, previewKind(services_.types, item_.mimeType)));
}

async::Task<void> PreviewWindow::load(Item item) {
  const auto kind = previewKind(services_.types, item.mimeType);
  // What was shown before stays for a moment, so that nothing flashes.
  if (!part_)
    gtk_stack_set_visible_child_name(GTK_STACK(stack_), "loading");
  if (kind == PreviewKind::image || kind == PreviewKind::pdf) {
    co_await loadDocument(std::move(item), kind);
  } else if (kind == PreviewKind::text) {
    auto part = co_await TextPart::open(std::move(item.path), title_);
    const bool isLate = co_await async::cancelled();
    if (isLate)
      co_return;
    if (part)
      setPart(std::move(part));
    else
      // TRANSLATORS: "it" is a file
      showCard(base::tr("It can't be shown as text."));
  } else {
    showCard("");
  }
}

async::Task<void> PreviewWindow::loadDocument(Item item, PreviewKind kind) {
  const auto decodedAs =
      kind == PreviewKind::pdf ? platform::DocumentKind::pdf : platform::DocumentKind::image;
  auto document = co_await services_.decoder.open(std::move(item.path), decodedAs);
  const bool isLate = co_await async::cancelled();
  if (isLate)
    co_return;
  if (!document) {
    tellFailure(document.error());
    co_return;
  }
  setPart(std::make_unique<PagesPart>(
      std::move(*document),
      PagesPart::Options{.kind = decodedAs,
                         .label = title_,
                         .tell =
                             [this](const std::string& text) {
                               adw_window_title_set_subtitle(ADW_WINDOW_TITLE(titleWidget_), text.c_str());
                             },
                         .failed = [this](const platform::DecodeError& error) { tellFailure(error); }}));
}

} // namespace ondrel::ui
