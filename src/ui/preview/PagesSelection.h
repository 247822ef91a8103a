#pragma once

#include "async/Scope.h"
#include "async/Timer.h"
#include "platform/documents/DocumentDecoder.h"
#include "platform/linux/glib/Connection.h"
#include "ui/preview/PageLayout.h"
#include "ui/preview/PageSelection.h"

#include <gtk/gtk.h>

#include <functional>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

namespace ondrel::ui {

// Selects text in a document with the pointer, from page to page. What is written on a page is asked of the
// decoder when it is needed first.
class PagesSelection {
 public:
  // Scrolls towards a height of the canvas that is out of sight and tells how far.
  using Pull = std::function<double(double y)>;

  // All outlive it. `canvas` is laid out as `layout` says.
  PagesSelection(platform::DecodedDocument& document, const PageLayout& layout, GtkWidget* canvas, Pull pull);
  PagesSelection(const PagesSelection&) = delete;
  PagesSelection& operator=(const PagesSelection&) = delete;

  void draw(GtkSnapshot* snapshot, std::size_t page);
  // Goes on until all pages are read. False where nothing is selected.
  bool copy();
  void selectAll();

 private:
  struct Place {
    std::size_t page = 0;
    PagePoint point;

    auto key() const { return std::tuple(page, point.y, point.x); }
  };
  // From the earlier place to the later one.
  struct Span {
    Place first;
    Place last;
    bool isAll = false;

    bool isEmpty() const { return !isAll && first.key() == last.key(); }
    bool holds(std::size_t page) const { return isAll || (page >= first.page && page <= last.page); }
    TextRange on(std::size_t page, const platform::PageText& text) const;
  };

  void begin(double x, double y);
  void extend(double x, double y);
  Span span() const;
  Place placeAt(double x, double y) const;
  async::Task<void> fetch(std::size_t page);
  async::Task<void> gather(Span span);

  platform::DecodedDocument& document_;
  const PageLayout& layout_;
  GtkWidget* const canvas_;
  const Pull pull_;
  std::map<std::size_t, std::optional<platform::PageText>> texts_; // absent while it is fetched
  Place from_;
  Place to_;
  bool isAll_ = false;
  async::Timer pulling_; // while the pointer is beyond an edge
  std::vector<glib::Connection> connections_;
  async::TaskHandle copying_;
  async::Scope scope_;
};

} // namespace ondrel::ui
