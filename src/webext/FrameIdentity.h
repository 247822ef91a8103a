#pragma once

#include <webkit/webkit-web-process-extension.h>

#include <cstdint>
#include <string>

namespace ondrel::webext {

// What the engine itself says of a frame and of the document that it shows now.
struct FrameIdentity {
  std::uint64_t id = 0;
  std::string url;
  std::string origin; // "null" for an opaque one
  bool isMainFrame = false;
};

FrameIdentity identityOf(WebKitFrame* frame);

} // namespace ondrel::webext
