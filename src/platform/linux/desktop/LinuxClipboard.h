#pragma once

#include "platform/Clipboard.h"

namespace ondrel::platform::desktop {

// The clipboard of the default display. Needs GTK to be initialised.
class LinuxClipboard final : public Clipboard {
 public:
  async::Task<std::optional<std::string>> readString() override;
  void writeString(const std::string& text) override;
};

} // namespace ondrel::platform::desktop
