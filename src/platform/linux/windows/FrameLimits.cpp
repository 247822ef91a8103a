#include "platform/linux/windows/FrameLimits.h"

#include <algorithm>
#include <cmath>

namespace ondrel::platform::windows {

namespace {

constexpr double farthestPosition = 100000;
// A part of the window so large must be on a monitor, so that the user can take hold of it.
constexpr double grabWidth = 100;
constexpr double grabHeight = 40;

double side(double wanted, double fallback, double smallest) {
  return std::clamp(std::isfinite(wanted) && wanted > 0 ? std::round(wanted) : fallback, smallest,
                    largestSide);
}

double position(double wanted) {
  return std::isfinite(wanted) ? std::clamp(std::round(wanted), -farthestPosition, farthestPosition) : 0;
}

double overlap(double a, double aLength, double b, double bLength) {
  return std::min(a + aLength, b + bLength) - std::max(a, b);
}

// Into the given stretch, as far as it fits, and with its beginning rather than its end.
double moved(double start, double length, double from, double available) {
  return std::max(from, std::min(start, from + available - length));
}

double centreDistance(const Rect& a, const Rect& b) {
  return std::hypot(a.x + a.width / 2 - b.x - b.width / 2, a.y + a.height / 2 - b.y - b.height / 2);
}

} // namespace

Rect usableFrame(const Rect& wanted, const Rect& fallback, const std::vector<Rect>& monitors) {
  Rect frame{position(wanted.x), position(wanted.y), side(wanted.width, fallback.width, smallestWidth),
             side(wanted.height, fallback.height, smallestHeight)};
  if (monitors.empty())
    return frame;

  const auto shown = [&frame](const Rect& monitor) {
    const double width = overlap(frame.x, frame.width, monitor.x, monitor.width);
    const double height = overlap(frame.y, frame.height, monitor.y, monitor.height);
    return width >= grabWidth && height >= grabHeight ? width * height : 0.0;
  };
  const auto best = std::ranges::max_element(monitors, {}, shown);
  const bool visible = shown(*best) > 0;
  const auto& monitor =
      visible ? *best : *std::ranges::min_element(monitors, {}, [&frame](const Rect& candidate) {
        return centreDistance(frame, candidate);
      });

  frame.width = std::max(smallestWidth, std::min(frame.width, monitor.width));
  frame.height = std::max(smallestHeight, std::min(frame.height, monitor.height));
  if (!visible) {
    frame.x = moved(frame.x, frame.width, monitor.x, monitor.width);
    frame.y = moved(frame.y, frame.height, monitor.y, monitor.height);
  }
  return frame;
}

} // namespace ondrel::platform::windows
