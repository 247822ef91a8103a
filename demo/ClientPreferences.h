#pragma once

#include "demo/Arguments.h"

namespace ondrel::demo {

// The one "singleton" object of the user's preferences.
MethodResult clientPreferencesGet(const JmapContext& context, Arguments& arguments);

} // namespace ondrel::demo
