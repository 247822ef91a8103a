#pragma once

#include "async/Scope.h"
#include "base/Event.h"
#include "platform/linux/glib/Connection.h"
#include "ui/page/ProblemBar.h"
#include "ui/preview/PreviewKind.h"
#include "ui/preview/PreviewPart.h"
#include "ui/preview/ZoomButtons.h"
#include "ui/widgets/WidthWatch.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform {
class Application;
class DocumentDecoder;
class UriLauncher;
class UserDefaults;
class Window;
struct DecodeError;
} // namespace ondrel::platform

namespace ondrel::ui {

// The window that shows one file after the other. Nothing in a file is run, and nothing that it names is
// loaded from elsewhere. Main thread.
class PreviewWindow final {
 public:
  struct Item {
    std::string path;
    std::string name; // as it was sent, in any bytes
    std::string mimeType;
  };
  // All outlive it.
  struct Services {
    platform::Application& application;
    platform::DocumentDecoder& decoder;
    platform::UriLauncher& launcher;
    platform::UserDefaults& defaults;
    const platform::ContentTypes& types;
  };

  explicit PreviewWindow(Services services);
  PreviewWindow(const PreviewWindow&) = delete;
  PreviewWindow& operator=(const PreviewWindow&) = delete;

  // Opens the window or shows another file in it. `parent` may be null. `neighbour` is called with -1 or 1
  // when the user asks for the file before or behind this one, where there is one; the caller shows that.
  void show(const Item& item, GtkWindow* parent, std::function<void(int step)> neighbour);
  void showLoading(const std::string& name); // the neighbour is being fetched
  void showError(const std::string& text);   // it could not be
  // Whether there is a file before and behind; there are none at first.
  void setNeighbours(bool hasPrevious, bool hasNext);
  bool isOpen() const { return window_ != nullptr; }
  void close();

  base::Event<> closed; // by whomever

 private:
  void open(GtkWindow* parent);
  void forget();
  void keepFrame();
  glib::Ref<GtkWidget> makeContent();
  GtkWidget* makeHeaderBar();
  void addButton(GtkWidget* bar, bool atStart, GtkWidget* button, std::function<void()> clicked);
  void addKeys(GtkWidget* box);
  bool handleKey(guint key, GdkModifierType modifiers);
  bool handlePlainKey(guint key);
  bool handleControlKey(guint key);
  bool isControlFocused() const;
  void step(int by);
  void setTitle(const std::string& name);
  void setPart(std::unique_ptr<PreviewPart> part);
  void leavePart();
  void showCard(const std::string& note);
  void play();
  void openWith();
  async::Task<void> askWhatOpens(std::string path);
  async::Task<void> load(Item item);
  async::Task<void> loadDocument(Item item, PreviewKind kind);
  void tellFailure(const platform::DecodeError& error);

  const Services services_;
  Item item_;
  std::string title_; // of the item or of the one that is fetched
  std::function<void(int step)> neighbour_;
  bool isAwaited_ = false;
  // Of the open window; empty while there is none.
  std::shared_ptr<platform::Window> window_;
  glib::Ref<GtkWidget> content_;
  GtkWidget* titleWidget_ = nullptr;
  GtkWidget* stack_ = nullptr;
  GtkWidget* errorPage_ = nullptr;
  GtkWidget* place_ = nullptr; // of the part
  GtkWidget* openButton_ = nullptr;
  GtkWidget* previousButton_ = nullptr;
  GtkWidget* nextButton_ = nullptr;
  std::optional<ZoomButtons> zoom_;
  std::optional<WidthWatch> width_;
  std::optional<ProblemBar> problem_;
  std::unique_ptr<PreviewPart> part_;
  std::vector<glib::Connection> connections_;
  std::vector<base::Subscription> subscriptions_;
  async::TaskHandle loading_;
  async::TaskHandle opening_;
  async::Scope scope_;
};

} // namespace ondrel::ui
