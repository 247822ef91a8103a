#pragma once

#include "async/Task.h"
#include "base/Translation.h"
#include "platform/Window.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform {

enum class AlertStyle { informational, warning, critical };

struct Alert {
  std::string messageText;
  std::string informativeText;
  AlertStyle style = AlertStyle::informational;
  std::vector<std::string> buttons = {base::tr("OK")}; // the first is the default one
  std::string escapeButton = base::tr("Cancel"); // what Escape answers; the last one where it is none of them
};

struct SavePanel {
  std::string proposedName;
  std::vector<std::string> mimeTypes; // allowed types; empty for any
};

struct OpenPanel {
  bool allowsMultipleSelection = false;
  bool canChooseFiles = true;
  bool canChooseDirectories = false;
  std::vector<std::string> mimeTypes;
};

// Questions to the user. None blocks the program: each suspends its caller. `parent` may be null or closed
// meanwhile.
class Panels {
 public:
  static constexpr int firstButton = 1000;

  virtual ~Panels() = default;
  // firstButton plus the position of the button pressed.
  virtual async::Task<int> runAlert(Alert alert, std::shared_ptr<Window> parent) = 0;
  virtual async::Task<std::optional<std::string>> runSavePanel(SavePanel panel,
                                                               std::shared_ptr<Window> parent) = 0;
  virtual async::Task<std::optional<std::vector<std::string>>>
  runOpenPanel(OpenPanel panel, std::shared_ptr<Window> parent) = 0;
};

} // namespace ondrel::platform
