#pragma once

#include "async/EventLoop.h"
#include "async/Task.h"

#include <vector>

namespace ondrel::async {
class Scope;
}

namespace ondrel::highlights {

// Starts each task when the one before it has ended. One that takes longer than `patience` isn't waited for
// any longer: it goes on in the scope, beside the later ones. When the awaiting task is cancelled, no more
// are started. The scope outlives the call.
async::Task<void> runSequentially(async::Scope& scope, std::vector<async::Task<void>> tasks,
                                  async::Duration patience);

} // namespace ondrel::highlights
