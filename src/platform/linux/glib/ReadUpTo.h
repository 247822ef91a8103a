#pragma once

#include "async/Task.h"
#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <cstddef>
#include <optional>
#include <string>

namespace ondrel::glib {

// What a stream has to give, without waiting for it on this thread. Absent for a failure or when the task is
// cancelled; longer than the limit when there is more. Main thread only.
async::Task<std::optional<std::string>> readUpTo(std::size_t limit, Ref<GInputStream> stream);

} // namespace ondrel::glib
