#pragma once

#include <adwaita.h>

namespace ondrel::platform::windows {

// Tells screen readers what the toolkit's tabs are and what they are called, which it doesn't itself. Before
// the first bar is filled.
void giveTabsTheirRoles();

// Names the tabs of the bar by the titles that they show, also those that they get later, and their buttons,
// and tells which one is in front. After each tab that comes, and when another one is selected.
void nameTabs(AdwTabBar* bar);

} // namespace ondrel::platform::windows
