// What the libraries allocate while they are loaded is theirs for the life of the process, and no leak: GLib, say,
// replaces its first table of quarks when it is full, and leaves the old one to whoever may still read it. The stacks
// of such allocations end in code without frame pointers, where they can't be told by a name.

#include <sanitizer/lsan_interface.h>

namespace {

void beforeTheLibraries() {
  __lsan_disable();
}

// The only place that runs before the constructors of shared libraries; the sanitizers' own entry stands before it.
[[gnu::section(".preinit_array"), gnu::used]] void (*const first)() = beforeTheLibraries;

[[gnu::constructor(101)]] void afterTheLibraries() {
  __lsan_enable();
}

} // namespace
