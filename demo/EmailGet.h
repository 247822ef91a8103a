#pragma once

#include "demo/Arguments.h"

namespace ondrel::demo {

// RFC 8621, 4.2.
MethodResult emailGet(const JmapContext& context, Arguments& arguments);

} // namespace ondrel::demo
