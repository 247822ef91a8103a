#pragma once

namespace ondrel::platform {

// The engine keeps its web processes in a sandbox made by bubblewrap, and ends the whole program when that
// can't be made. Call before the first web view: where it can't (no user namespaces, say), a log line tells
// so and the engine goes on without it. Returns whether the sandbox is there. Runs a program once, some
// milliseconds.
bool ensureSandboxOrFallBack();

} // namespace ondrel::platform
