#pragma once

namespace ondrel::platform::webkit {

// The engine keeps its web processes in a sandbox made by bubblewrap, and ends the whole program when that
// can't be made. Call before the first web view: where bubblewrap is missing or says twice that this machine
// doesn't let it (no user namespaces, say), a log line tells so and the engine goes on without it. Any other
// failure may pass, and leaves the sandbox on. Returns whether it is on. Runs a program once, some
// milliseconds; after failures again, for up to half a second.
bool ensureSandboxOrFallBack();

} // namespace ondrel::platform::webkit
