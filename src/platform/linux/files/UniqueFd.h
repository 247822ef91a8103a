#pragma once

#include <unistd.h>

#include <utility>

namespace ondrel::platform::files {

// Owns a file descriptor.
class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(other.release()) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    UniqueFd old(std::exchange(fd_, other.release()));
    return *this;
  }
  ~UniqueFd() {
    if (fd_ >= 0)
      ::close(fd_);
  }

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  int release() { return std::exchange(fd_, -1); }

 private:
  int fd_ = -1;
};

} // namespace ondrel::platform::files
