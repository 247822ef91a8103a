#pragma once

#include "async/Task.h"

#include <memory>

namespace ondrel::platform {
class Window;
}

namespace ondrel::web {

class WindowViewModel;
struct WebServices;

// What a tab shows on paper or in a PDF file: of a page of the service with an open conversation the messages
// without the application around them. A file that was made is told by the tab's `fileMade`, a failure on
// its window. The services outlive them.
async::Task<void> printWithPanel(std::weak_ptr<WindowViewModel> tab, const WebServices& services);
async::Task<void> exportAsPDF(std::weak_ptr<WindowViewModel> tab, std::shared_ptr<platform::Window> parent,
                              const WebServices& services);

} // namespace ondrel::web
