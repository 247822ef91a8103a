#pragma once

#include "async/Scope.h"
#include "platform/documents/DocumentDecoder.h"
#include "platform/linux/glib/Connection.h"
#include "ui/preview/PageLayout.h"
#include "ui/preview/PageSelection.h"

#include <gtk/gtk.h>

#include <map>
#include <optional>
#include <vector>

namespace ondrel::ui {

// Selects text on one page of a document with the pointer. What is written there is asked of the decoder when
// it is needed first.
class PagesSelection {
 public:
  // All outlive it. `canvas` is laid out as `layout` says.
  PagesSelection(platform::DecodedDocument& document, const PageLayout& layout, GtkWidget* canvas);
  PagesSelection(const PagesSelection&) = delete;
  PagesSelection& operator=(const PagesSelection&) = delete;

  void draw(GtkSnapshot* snapshot, std::size_t page) const;
  // False where nothing is selected.
  bool copy() const;
  void selectAll(std::size_t page);

 private:
  void begin(double x, double y);
  void extend(double x, double y);
  void update();
  const platform::PageText* text(std::size_t page) const;
  async::Task<void> fetch(std::size_t page);
  PagePoint pointOn(std::size_t page, double x, double y) const;

  platform::DecodedDocument& document_;
  const PageLayout& layout_;
  GtkWidget* const canvas_;
  std::map<std::size_t, std::optional<platform::PageText>> texts_; // absent while it is fetched
  std::optional<std::size_t> page_;                                // that is selected on
  bool isAll_ = false;
  PagePoint from_;
  PagePoint to_;
  TextRange range_;
  std::vector<glib::Connection> connections_;
  async::Scope scope_;
};

} // namespace ondrel::ui
