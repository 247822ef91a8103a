#pragma once

#include <jsc/jsc.h>

#include <cstdint>
#include <functional>

namespace ondrel::webext {

// Each state that a page gives to its history goes to the program, which keeps it and writes it down, at many
// times its size in memory. From here on the context's pushState and replaceState refuse states over 256 KiB
// and addresses over 64 KiB, with an exception as for the engine's own limits, and tell the size of those
// that they let pass. Call before any script of the page runs: it gets no hold of the original functions.
void limitHistory(JSCContext* context, std::function<void(std::uint64_t bytes)> passed);

} // namespace ondrel::webext
