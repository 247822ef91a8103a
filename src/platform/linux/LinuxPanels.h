#pragma once

#include "platform/Panels.h"

namespace ondrel::platform {

// Dialogs of the desktop, modal for the parent's top-level. A dialog whose top-level goes counts as
// dismissed.
class LinuxPanels final : public Panels {
 public:
  // Longer texts are cut: a page may ask with a text of any length.
  static constexpr std::size_t longestText = 2000; // characters

  async::Task<int> runAlert(Alert alert, std::shared_ptr<Window> parent) override;
  async::Task<std::optional<std::string>> runSavePanel(SavePanel panel,
                                                       std::shared_ptr<Window> parent) override;
  async::Task<std::optional<std::vector<std::string>>> runOpenPanel(OpenPanel panel,
                                                                    std::shared_ptr<Window> parent) override;
};

} // namespace ondrel::platform
