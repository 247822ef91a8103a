#pragma once

#include "async/Scope.h"
#include "async/Signal.h"
#include "platform/documents/DocumentDecoder.h"
#include "platform/linux/glib/Connection.h"
#include "ui/preview/PageLayout.h"
#include "ui/preview/PagesSelection.h"
#include "ui/preview/PreviewPart.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::ui {

// An image, which may move, or the pages of a PDF one below the other. Only what can be seen is asked of the
// decoder, in the size that it has on screen, and kept.
class PagesPart final : public PreviewPart {
 public:
  struct Options {
    platform::DocumentKind kind;
    std::string label;                                        // for those who don't see it
    std::function<void(const std::string&)> tell;             // what can be seen: "Page 2 of 7"
    std::function<void(const platform::DecodeError&)> failed; // nothing can be seen
  };

  PagesPart(std::unique_ptr<platform::DecodedDocument> document, Options options);
  ~PagesPart() override;
  PagesPart(const PagesPart&) = delete;
  PagesPart& operator=(const PagesPart&) = delete;

  GtkWidget* widget() const override { return scroller_.get(); }
  GtkWidget* focus() const override { return canvas_.get(); }
  bool canZoom() const override { return true; }
  void zoom(Zoom step) override;
  bool scroll(int step) override;
  bool copy() override { return selection_ && selection_->copy(); }
  bool selectAll() override;

 private:
  struct Shown {
    int width = 0; // pixels; what was asked for, also where that has failed
    int height = 0;
    glib::Ref<GdkTexture> texture;
  };
  struct Wanted {
    std::size_t page;
    int width;
    int height;
  };

  bool isPdf() const { return options_.kind == platform::DocumentKind::pdf; }
  void addGestures();
  void setScale(double scale);
  void arrange();
  void tellPage();
  void draw(GtkSnapshot* snapshot);
  double pull(double y);
  std::pair<std::size_t, std::size_t> visible() const;
  Wanted wanted(std::size_t page) const;
  std::optional<Wanted> missing();
  async::Task<void> follow(); // the size of the window
  async::Task<void> fetch();  // what comes into sight
  async::Task<void> animate();

  const std::unique_ptr<platform::DecodedDocument> document_;
  const Options options_;
  PageLayout layout_;
  glib::Ref<GtkWidget> canvas_;
  glib::Ref<GtkWidget> scroller_;
  GtkAdjustment* const horizontal_; // the scroller's
  GtkAdjustment* const vertical_;
  bool isFitted_ = true;
  double pinchedScale_ = 1; // at the start of a pinch
  std::map<std::size_t, Shown> shown_;
  std::string told_;
  std::optional<PagesSelection> selection_; // of a PDF
  async::Signal resized_;
  async::Signal moved_;
  std::vector<glib::Connection> connections_;
  async::Scope scope_;
};

} // namespace ondrel::ui
