#pragma once

#include <string_view>

namespace ondrel::base {

// Whether the host of an address can be nothing but this machine, in any case of its letters: "localhost", a
// name under it, 127.x.y.z in full, or ::1, with its brackets or without. Other spellings of such an address
// are none: what another parser takes them for can't be known here.
bool isLoopbackHost(std::string_view host);

} // namespace ondrel::base
