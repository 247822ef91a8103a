#include "ui/widgets/WindowFrameAutosave.h"

#include "platform/UserDefaults.h"

#include <fmt/format.h>

#include <cmath>
#include <locale>
#include <sstream>

namespace ondrel::ui {

namespace {

std::string keyFor(const std::string& name) {
  return "windowFrame." + name;
}

} // namespace

std::optional<platform::Rect> savedFrame(const platform::UserDefaults& defaults, const std::string& name) {
  const auto text = defaults.string(keyFor(name));
  if (!text)
    return std::nullopt;
  std::istringstream numbers(*text);
  numbers.imbue(std::locale::classic());
  platform::Rect frame;
  numbers >> frame.x >> frame.y >> frame.width >> frame.height;
  return numbers && frame.width > 0 && frame.height > 0 ? std::optional(frame) : std::nullopt;
}

void saveFrame(platform::UserDefaults& defaults, const std::string& name, const platform::Rect& frame) {
  defaults.set(keyFor(name), fmt::format("{} {} {} {}", std::lround(frame.x), std::lround(frame.y),
                                         std::lround(frame.width), std::lround(frame.height)));
}

} // namespace ondrel::ui
