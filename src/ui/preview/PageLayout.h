#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace ondrel::ui {

// Where the pages of a document are, one below the other, in the widget's own pixels.
class PageLayout {
 public:
  struct Size {
    double width = 0;
    double height = 0;
  };
  struct Box {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
  };
  struct Options {
    double gap = 0;          // around and between pages
    double perUnit = 1;      // pixels of a page's unit at a scale of 1
    bool fitsHeight = false; // fit() shows all of a page, else its width
  };

  static constexpr double smallestScale = 0.02;
  static constexpr double largestScale = 8;

  // `pages` in their own units.
  PageLayout(std::vector<Size> pages, Options options);

  // The scale at which the widest page fills the room, at most 1.
  double fit(const Size& room) const;
  // Lays them out anew, in the middle of a room of that width or in as much as they need.
  void arrange(double scale, double roomWidth);

  double scale() const { return scale_; }
  Size size() const { return size_; } // of everything
  const std::vector<Box>& boxes() const { return boxes_; }
  // The first page that reaches into that part and the one behind the last.
  std::pair<std::size_t, std::size_t> within(double top, double bottom) const;

 private:
  const std::vector<Size> pages_;
  const Options options_;
  Size widest_; // the longest sides of any
  double scale_ = 1;
  Size size_;
  std::vector<Box> boxes_;
};

} // namespace ondrel::ui
