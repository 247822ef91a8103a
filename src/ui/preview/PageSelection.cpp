#include "ui/preview/PageSelection.h"

#include "platform/linux/glib/Ref.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ondrel::ui {

namespace {

using Box = platform::PageText::Box;

// Lines count for more than columns: beside a line, its end is nearer than the next line.
constexpr double lineWeight = 10;

double outside(double value, double low, double high) {
  return value < low ? low - value : std::max(value - high, 0.0);
}

double distance(const Box& box, PagePoint point) {
  return outside(point.x, box.left, box.right) + lineWeight * outside(point.y, box.top, box.bottom);
}

// New lines have no room of their own.
bool isEmpty(const Box& box) {
  return box.right <= box.left || box.bottom <= box.top;
}

std::optional<std::size_t> nearest(const platform::PageText& text, PagePoint point) {
  std::optional<std::size_t> best;
  double least = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < text.boxes.size(); ++i)
    if (const auto away = distance(text.boxes[i], point); !isEmpty(text.boxes[i]) && away < least) {
      best = i;
      least = away;
    }
  return best;
}

bool isSameLine(const Box& line, const Box& next) {
  const auto middle = (next.top + next.bottom) / 2;
  return middle > line.top && middle < line.bottom && next.left >= line.left;
}

} // namespace

TextRange textBetween(const platform::PageText& text, PagePoint from, PagePoint to) {
  const auto first = nearest(text, from);
  const auto last = nearest(text, to);
  if (!first || !last)
    return {};
  return {std::min(*first, *last), std::max(*first, *last) + 1};
}

TextRange textFrom(const platform::PageText& text, PagePoint from) {
  const auto first = nearest(text, from);
  return first ? TextRange{*first, text.characters.size()} : TextRange{};
}

TextRange textUpTo(const platform::PageText& text, PagePoint to) {
  const auto last = nearest(text, to);
  return last ? TextRange{0, *last + 1} : TextRange{};
}

std::vector<Box> lineBoxes(const platform::PageText& text, TextRange range) {
  std::vector<Box> lines;
  for (std::size_t i = range.begin; i < std::min(range.end, text.boxes.size()); ++i) {
    const auto& box = text.boxes[i];
    if (isEmpty(box))
      continue;
    if (lines.empty() || !isSameLine(lines.back(), box)) {
      lines.push_back(box);
      continue;
    }
    auto& line = lines.back();
    line.right = std::max(line.right, box.right);
    line.top = std::min(line.top, box.top);
    line.bottom = std::max(line.bottom, box.bottom);
  }
  return lines;
}

std::string selectedText(const platform::PageText& text, TextRange range) {
  std::string result;
  for (std::size_t i = range.begin; i < std::min(range.end, text.characters.size()); ++i) {
    char bytes[6];
    const auto length = g_unichar_to_utf8(static_cast<gunichar>(text.characters[i]), bytes);
    result.append(bytes, static_cast<std::size_t>(length));
  }
  return result;
}

} // namespace ondrel::ui
