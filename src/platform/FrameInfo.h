#pragma once

#include <cstdint>
#include <string>

namespace ondrel::platform {

// A frame of a page at the moment it sent a message. A value: the frame may be gone when it is used.
struct FrameInfo {
  std::uint64_t id = 0; // of the engine, unique in one web process
  std::string url;      // the document's address; "about:srcdoc" or "about:blank" for frames without one
  std::string
      origin; // "scheme://host[:port]" as the engine computes it; "null" when opaque (a sandboxed frame, say)
  bool isMainFrame = false;

  bool operator==(const FrameInfo&) const = default;
};

} // namespace ondrel::platform
