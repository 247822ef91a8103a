#pragma once

#include "async/Task.h"
#include "platform/documents/DocumentDecoder.h"

#include <memory>
#include <optional>
#include <string>

namespace ondrel::platform {

class Window;

// Prints files that the user doesn't see on screen. Main thread only.
class DocumentPrinter {
 public:
  virtual ~DocumentPrinter() = default;
  // Through the platform's dialog on the parent's window, each page scaled down to fit the paper and turned
  // where that suits it better. Gives a text for the user when the file can't be decoded or printed; being
  // cancelled by the user is no error. Ends when the job has been handed over. The job begins with the call,
  // and goes on when the task goes.
  virtual async::Task<std::optional<std::string>>
  print(std::string path, DocumentKind kind, std::string jobName, std::shared_ptr<Window> parent) = 0;
};

} // namespace ondrel::platform
