#pragma once

#include <chrono>

namespace ondrel::platform {

// How long a page may take to answer an evaluation. A hung page never answers; its caller then gets the same
// kind of error as for a page that has gone.
inline constexpr std::chrono::seconds evaluationDeadline{10};

} // namespace ondrel::platform
