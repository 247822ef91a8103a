#include "platform/linux/network/MemoryReturn.h"

#include <malloc.h>

#include <chrono>

namespace ondrel::platform::network {

namespace {

// By then it has been read and answered, and more of the kind may have come.
constexpr std::chrono::seconds pause{3};

} // namespace

void MemoryReturn::note(std::size_t size) {
  if (size >= large)
    timer_ = async::Timer(pause, [] { malloc_trim(0); });
}

} // namespace ondrel::platform::network
