#pragma once

#include "async/Timer.h"

#include <cstddef>

namespace ondrel::platform::network {

// Gives the memory of large answers back to the system some time after them: the allocator keeps what lies
// below the last piece that is in use. Main thread only.
class MemoryReturn {
 public:
  static constexpr std::size_t large = std::size_t{1} << 20; // bytes

  // An answer of that size has come.
  void note(std::size_t size);

 private:
  async::Timer timer_;
};

} // namespace ondrel::platform::network
