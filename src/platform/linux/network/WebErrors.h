#pragma once

#include "platform/WebError.h"

#include <glib.h>

namespace ondrel::platform::network {

// An error of the engine, of its network library or of GIO, in the program's domains and codes. Errors that
// have no code there get WebError::unknown of Domain::network, those of the engine's policies keep their code
// in Domain::policy.
WebError webErrorFrom(const GError& error);

} // namespace ondrel::platform::network
