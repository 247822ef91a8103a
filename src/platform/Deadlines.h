#pragma once

#include <chrono>

namespace ondrel::platform {

// How long a page may take to answer an evaluation. A hung page never answers; its caller then gets the same
// kind of error as for a page that has gone.
inline constexpr std::chrono::seconds evaluationDeadline{10};

// How long a page may take to say whether it may be closed. One that hasn't said by then may.
inline constexpr std::chrono::seconds closeDeadline{3};

} // namespace ondrel::platform
