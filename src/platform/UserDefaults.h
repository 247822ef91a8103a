#pragma once

#include "base/Event.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ondrel::platform {

// A flat, persistent store of settings, one for each user. Reads are typed: a value of another type counts as
// absent. Writes are on disk soon after and survive a crash; what can't be written holds and is tried again
// until exit.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  virtual std::optional<bool> boolean(std::string_view key) const = 0;
  virtual std::optional<std::int64_t> integer(std::string_view key) const = 0;
  virtual std::optional<double> number(std::string_view key) const = 0;
  virtual std::optional<std::string> string(std::string_view key) const = 0;

  virtual void set(std::string_view key, bool value) = 0;
  virtual void set(std::string_view key, std::int64_t value) = 0;
  virtual void set(std::string_view key, double value) = 0;
  virtual void set(std::string_view key, std::string value) = 0;
  void set(std::string_view key, const char* value) { set(key, std::string(value)); }
  void set(std::string_view key, int value) { set(key, std::int64_t{value}); }
  virtual void remove(std::string_view key) = 0;

  // Emitted with the key after its value has changed.
  base::Event<const std::string&> changed;
};

} // namespace ondrel::platform
