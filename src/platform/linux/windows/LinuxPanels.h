#pragma once

#include "base/Event.h"
#include "platform/Panels.h"
#include "platform/linux/windows/PanelFolders.h"

#include <functional>

namespace ondrel::platform::windows {

// Dialogs of the desktop, modal for the parent's top-level. A dialog whose top-level goes counts as
// dismissed.
class LinuxPanels final : public Panels {
 public:
  // Longer texts are cut: a page may ask with a text of any length.
  static constexpr std::size_t longestText = 2000; // characters

  struct Options {
    UserDefaults& defaults; // both outlive the panels
    const Directories& directories;
    // Where the defaults hold the folders that were used last.
    std::string_view saveFolderKey;
    std::string_view openFolderKey;
    // Held while a file chooser is open, which may be a window of another process. May be empty.
    std::function<base::Subscription()> keepActive{};
  };
  explicit LinuxPanels(const Options& options);

  async::Task<int> runAlert(Alert alert, std::shared_ptr<Window> parent) override;
  async::Task<std::optional<std::string>> runSavePanel(SavePanel panel,
                                                       std::shared_ptr<Window> parent) override;
  async::Task<std::optional<std::vector<std::string>>> runOpenPanel(OpenPanel panel,
                                                                    std::shared_ptr<Window> parent) override;

 private:
  PanelFolders folders_;
  const std::string saveFolderKey_;
  const std::string openFolderKey_;
  const std::function<base::Subscription()> keepActive_;
};

} // namespace ondrel::platform::windows
