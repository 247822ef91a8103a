#pragma once

#include <cstddef>

namespace ondrel::highlights {

// How far an export or import of highlights is.
struct TransferProgress {
  enum class Step { asking, reading, adding, labelling };

  Step step = Step::reading;
  std::size_t done = 0; // messages, highlights or threads
  std::size_t total = 0;

  bool operator==(const TransferProgress&) const = default;
};

} // namespace ondrel::highlights
