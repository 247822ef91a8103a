#pragma once

#include <string_view>

namespace ondrel::web {

// What is done with an address that a page, a link or a drop wants shown in place of what a frame shows:
// the frame goes there, the desktop's program for such addresses gets it, or nothing happens.
enum class AddressUse { stay, handToDesktop, cancel };

// The engine tells which frame a navigation is for only with its response. Until then the address may be one
// that a page gives to a frame inside of it.
enum class TargetFrame { main, unknown };

// A main frame shows pages of the web and the empty page, nothing else: whatever else a page asks for, or the
// user drops on it (a file above all), would take the place of what the user has written there.
AddressUse addressUse(std::string_view address, TargetFrame frame);

} // namespace ondrel::web
