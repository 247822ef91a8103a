#pragma once

#include "demo/Arguments.h"

namespace ondrel::demo {

// RFC 8621, 4.6, for what is there already: mailboxes, keywords, and to destroy. Nothing can be created.
MethodResult emailSet(const JmapContext& context, Arguments& arguments);

} // namespace ondrel::demo
