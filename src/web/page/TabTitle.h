#pragma once

#include <string>
#include <string_view>

namespace ondrel::web {

// What a tab is called: as its page is, but a list of messages by its mailbox alone, without a count of what
// is unread in it. The icon in the panel has the count, and a tab is found again by a name that stays.
std::string tabTitle(std::string_view title, std::string_view url);

} // namespace ondrel::web
