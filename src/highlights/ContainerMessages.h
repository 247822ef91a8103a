#pragma once

#include "jmap/MailQueries.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::web {
class WindowViewModel;
}

namespace ondrel::highlights {

// The Message-ID of the message that each container of the tab's page shows, where it is known. The page
// tells only how many containers there are and which one belongs to the open message: from there the others
// are counted along the thread. So a collapsed message between two that are shown puts the later ones off by
// one.
std::vector<std::optional<std::string>> containerMessageIds(const web::WindowViewModel& tab);

// Of a message's address in the web application, whose path ends in "<thread id>.<email id>". For the address
// of a mailbox that is a text that is no thread's id.
std::optional<std::string> threadIdFromURL(const std::string& url);

} // namespace ondrel::highlights
