#pragma once

#include "demo/Arguments.h"

namespace ondrel::demo {

// RFC 8621, 2: mailboxes.
MethodResult mailboxGet(const JmapContext& context, Arguments& arguments);
MethodResult mailboxChanges(const JmapContext& context, Arguments& arguments);
// RFC 8621, 3: threads.
MethodResult threadGet(const JmapContext& context, Arguments& arguments);
MethodResult threadChanges(const JmapContext& context, Arguments& arguments);
// RFC 8621, 4.3.
MethodResult emailChanges(const JmapContext& context, Arguments& arguments);

} // namespace ondrel::demo
