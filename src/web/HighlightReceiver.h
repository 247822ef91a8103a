#pragma once

#include "platform/FrameInfo.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace ondrel::web {

class WindowViewModel;

// Who handles what a page's highlight scripts report. Each report repeats the page's whole state.
class HighlightReceiver {
 public:
  using Tab = std::shared_ptr<WindowViewModel>;

  virtual ~HighlightReceiver() = default;
  virtual void messageChanged(Tab tab, std::string internalId) = 0;
  virtual void containersChanged(Tab tab, std::int64_t count, std::optional<std::int64_t> focusedIndex) = 0;
  virtual void hostReady(Tab tab, platform::FrameInfo frame) = 0;
  virtual void create(Tab tab, std::string anchorJSON, std::int64_t containerIndex) = 0;
  virtual void remove(Tab tab, std::string highlightId, std::int64_t containerIndex) = 0;
  virtual void clearOrphaned(Tab tab, std::string idsJSON, std::int64_t containerIndex) = 0;
  virtual void mailboxMarkersReady(Tab tab) = 0;
};

} // namespace ondrel::web
