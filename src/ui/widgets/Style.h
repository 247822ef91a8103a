#pragma once

namespace ondrel::ui {

// The few rules of style that are the program's own, for the default display. Once, after the toolkit's
// start.
void installStyle();

} // namespace ondrel::ui
