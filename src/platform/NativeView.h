#pragma once

namespace ondrel::platform {

// A toolkit's own object behind an abstract one (a GtkWidget* on Linux), for `ui/` to place. Borrowed.
struct NativeView {
  void* handle = nullptr;
};

} // namespace ondrel::platform
