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

// Gives the document that the frame shows now a number, by which it is known whenever it is shown: the engine
// keeps documents that are left, and brings them back without a word.
void numberDocument(WebKitFrame* frame, std::uint64_t number);
// 0 for a document without one.
std::uint64_t documentNumber(WebKitFrame* frame);

} // namespace ondrel::webext
