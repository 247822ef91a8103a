#pragma once

#include <jsc/jsc.h>

#include <string>

namespace ondrel::webext {

// Makes window.webkit.messageHandlers.NAME in the context, an object with the function as its postMessage.
// Objects that are there already are added to.
void installHandler(JSCContext* context, const std::string& name, JSCValue* postMessage);

} // namespace ondrel::webext
