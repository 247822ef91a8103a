#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>

namespace ondrel::base {

enum class LogLevel { debug, info, notice, error };

// Where log lines go; the platform installs its own. The default drops them. Main thread only.
using LogSink = void (*)(LogLevel, std::string_view category, std::string_view message);
void setLogSink(LogSink sink);

// A handle on one category ("system", "network", "notifications", "ui" or "script") of the program's log.
class Logger {
 public:
  explicit constexpr Logger(std::string_view category) : category_(category) {}

  template <class... Args>
  void debug(fmt::format_string<Args...> format, Args&&... args) const {
    write(LogLevel::debug, fmt::format(format, std::forward<Args>(args)...));
  }
  template <class... Args>
  void info(fmt::format_string<Args...> format, Args&&... args) const {
    write(LogLevel::info, fmt::format(format, std::forward<Args>(args)...));
  }
  template <class... Args>
  void notice(fmt::format_string<Args...> format, Args&&... args) const {
    write(LogLevel::notice, fmt::format(format, std::forward<Args>(args)...));
  }
  template <class... Args>
  void error(fmt::format_string<Args...> format, Args&&... args) const {
    write(LogLevel::error, fmt::format(format, std::forward<Args>(args)...));
  }

 private:
  void write(LogLevel level, const std::string& message) const;
  std::string_view category_;
};

// Marks a value that may hold the user's data: outside debug builds the log shows "<private>" in its place.
struct Private {
  std::string_view value;
};

} // namespace ondrel::base

template <>
struct fmt::formatter<ondrel::base::Private> : fmt::formatter<std::string_view> {
  template <class Context>
  auto format(const ondrel::base::Private& masked, Context& context) const {
#ifdef NDEBUG
    (void)masked;
    return fmt::formatter<std::string_view>::format("<private>", context);
#else
    return fmt::formatter<std::string_view>::format(masked.value, context);
#endif
  }
};
