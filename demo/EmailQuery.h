#pragma once

#include "demo/Arguments.h"

namespace ondrel::demo {

// RFC 8621, 4.4.
MethodResult emailQuery(const JmapContext& context, Arguments& arguments);

} // namespace ondrel::demo
