#pragma once

#include <expected>
#include <string>
#include <utility>

namespace ondrel::start {

// The home of this process, which the engine and the toolkit can't do without. Where HOME names a folder,
// that. Where it names none at all, the one of the user database. Else an empty one, for the user alone, that
// goes with this object.
class HomeFolder {
 public:
  // Sets HOME. Call it before anything asks for the home. The error is a line for the user.
  static std::expected<HomeFolder, std::string> find();
  HomeFolder(HomeFolder&& other) noexcept : temporary_(std::exchange(other.temporary_, {})) {}
  HomeFolder& operator=(HomeFolder&&) = delete;
  ~HomeFolder();

  // Its path if it goes with this object, else empty.
  const std::string& temporary() const { return temporary_; }

 private:
  explicit HomeFolder(std::string temporary) : temporary_(std::move(temporary)) {}

  std::string temporary_;
};

} // namespace ondrel::start
