#pragma once

#include "async/Task.h"

#include <memory>
#include <string>

namespace ondrel::web {

class WindowViewModel;
struct WebServices;

// Opens a message in a page that has just been given its address: loading the address doesn't reliably open
// it in the service's single-page application. Tries for about five seconds; a page whose application never
// started is sent to the base mailbox.
async::Task<void> selectRow(std::string emailId, std::string thread, std::weak_ptr<WindowViewModel> viewModel,
                            const WebServices& services);

} // namespace ondrel::web
