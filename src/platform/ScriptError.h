#pragma once

#include <optional>
#include <string>

namespace ondrel::platform {

// Why an evaluation gave no value: the page threw, the value can't be carried over, the page or frame is
// gone, or nothing answered in time.
struct ScriptError {
  enum class Kind { exception, unsupportedValue, gone, timedOut };
  Kind kind = Kind::gone;
  std::string message;
  // Where in the evaluated text it was thrown, counted from 1. Absent where the engine doesn't tell: for what
  // code of the page or the engine itself throws, and in frames.
  std::optional<int> line = {};
};

// For the log and for people.
std::string description(const ScriptError& error);

} // namespace ondrel::platform
