#pragma once

#include "platform/linux/webkit/WebKitMessages.h"

#include <webkit/webkit-web-process-extension.h>

#include <string>

namespace ondrel::webext {

struct Evaluation {
  platform::webkit::Evaluated kind;
  std::string text;
};

// Runs a program in the page's world of a frame. A value of undefined counts as null.
Evaluation evaluateIn(WebKitFrame* frame, const char* source);

} // namespace ondrel::webext
