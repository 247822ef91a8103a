#pragma once

#include <webkit/webkit-web-process-extension.h>

#include <string>
#include <vector>

namespace ondrel::webext {

// A program that the extension runs in the page's world of each new document.
struct UserScript {
  std::string source;
  bool atDocumentStart =
      false; // else when the document has been read, before the page's own listeners hear of it
  bool mainFrameOnly = true;
};

// Runs the scripts in the document that the frame shows now, each at its time or, where that is over, at
// once.
void arrangeUserScripts(WebKitFrame* frame, const std::vector<UserScript>& scripts);

} // namespace ondrel::webext
