#include "ui/preview/PageLayout.h"

#include <algorithm>
#include <cmath>

namespace ondrel::ui {

PageLayout::PageLayout(std::vector<Size> pages, Options options)
    : pages_(std::move(pages)), options_(options), boxes_(pages_.size()) {
  for (const auto& page : pages_) {
    widest_.width = std::max(widest_.width, page.width);
    widest_.height = std::max(widest_.height, page.height);
  }
  arrange(1, 0);
}

double PageLayout::fit(const Size& room) const {
  const double margins = 2 * options_.gap;
  double scale = (room.width - margins) / (widest_.width * options_.perUnit);
  if (options_.fitsHeight)
    scale = std::min(scale, (room.height - margins) / (widest_.height * options_.perUnit));
  return std::clamp(scale, smallestScale, 1.0);
}

void PageLayout::arrange(double scale, double roomWidth) {
  scale_ = std::clamp(scale, smallestScale, largestScale);
  const double factor = scale_ * options_.perUnit;
  size_.width = std::max(roomWidth, std::ceil(widest_.width * factor) + 2 * options_.gap);
  double y = options_.gap;
  for (std::size_t i = 0; i < pages_.size(); ++i) {
    // Whole pixels, so that a picture of that size is drawn sharp.
    const double width = std::max(1.0, std::round(pages_[i].width * factor));
    const double height = std::max(1.0, std::round(pages_[i].height * factor));
    boxes_[i] = {std::floor((size_.width - width) / 2), y, width, height};
    y += height + options_.gap;
  }
  size_.height = y;
}

std::pair<std::size_t, std::size_t> PageLayout::within(double top, double bottom) const {
  const auto first =
      std::ranges::partition_point(boxes_, [top](const Box& box) { return box.y + box.height <= top; });
  const auto last = std::ranges::partition_point(boxes_, [bottom](const Box& box) { return box.y < bottom; });
  const auto begin = static_cast<std::size_t>(first - boxes_.begin());
  return {begin, std::max(begin, static_cast<std::size_t>(last - boxes_.begin()))};
}

} // namespace ondrel::ui
