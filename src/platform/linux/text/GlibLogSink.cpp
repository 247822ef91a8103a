#include "platform/linux/text/GlibLogSink.h"

#include "platform/linux/glib/Ref.h"

#include <fmt/format.h>

#include <array>
#include <cstdio>
#include <unistd.h>
#include <vector>

namespace ondrel::platform::text {

namespace {

constexpr std::size_t longestMessage = 65536;

struct State {
  bool installed = false;
  std::string subsystem;
  base::LogLevel threshold = base::LogLevel::notice;
  bool toJournal = false;
};
State state; // written once, before other threads log

const char* levelName(GLogLevelFlags level) {
  if (level & (G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL))
    return "error";
  if (level & G_LOG_LEVEL_WARNING)
    return "warning";
  if (level & G_LOG_LEVEL_MESSAGE)
    return "notice";
  return level & G_LOG_LEVEL_INFO ? "info" : "debug";
}

std::string localTime() {
  const glib::Owned<GDateTime> now(g_date_time_new_now_local());
  const glib::CString text(g_date_time_format(now.get(), "%F %T"));
  return fmt::format("{}.{:03}", text.get(), g_date_time_get_microsecond(now.get()) / 1000);
}

void writeToStderr(std::string_view text) {
  while (!text.empty()) {
    const auto written = write(STDERR_FILENO, text.data(), text.size());
    if (written <= 0)
      return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

void output(GLogLevelFlags level, std::string_view origin, std::string_view message) {
  writeToStderr(GlibLogSink::line(localTime(), origin, level, message));
}

// Journal priorities are syslog's.
const char* priority(base::LogLevel level) {
  switch (level) {
  case base::LogLevel::error:
    return "3";
  case base::LogLevel::notice:
    return "5";
  case base::LogLevel::info:
    return "6";
  case base::LogLevel::debug:
    break;
  }
  return "7";
}

GLogLevelFlags glibLevel(base::LogLevel level) {
  switch (level) {
  case base::LogLevel::error:
    return G_LOG_LEVEL_CRITICAL;
  case base::LogLevel::notice:
    return G_LOG_LEVEL_MESSAGE;
  case base::LogLevel::info:
    return G_LOG_LEVEL_INFO;
  case base::LogLevel::debug:
    break;
  }
  return G_LOG_LEVEL_DEBUG;
}

// Doesn't go through g_log(): an error of ours is none of GLib's criticals and must not be fatal where those
// are.
void sink(base::LogLevel level, std::string_view category, std::string_view message) {
  if (!GlibLogSink::shows(level))
    return;
  if (state.toJournal) {
    const auto text = GlibLogSink::escaped(message);
    const std::string categoryField(category);
    const std::array fields{
        GLogField{"MESSAGE", text.c_str(), -1},           GLogField{"PRIORITY", priority(level), -1},
        GLogField{"SYSLOG_IDENTIFIER", "ondrel", -1},     GLogField{"SUBSYSTEM", state.subsystem.c_str(), -1},
        GLogField{"CATEGORY", categoryField.c_str(), -1},
    };
    if (g_log_writer_journald(glibLevel(level), fields.data(), fields.size(), nullptr) ==
        G_LOG_WRITER_HANDLED)
      return;
  }
  output(glibLevel(level), fmt::format("ondrel[{}]", category), message);
}

std::string_view fieldText(const GLogField& field) {
  const auto* text = static_cast<const char*>(field.value);
  return field.length < 0 ? std::string_view(text)
                          : std::string_view(text, static_cast<std::size_t>(field.length));
}

// May come from any thread.
GLogWriterOutput writer(GLogLevelFlags level, const GLogField* fields, gsize count, gpointer) {
  std::string_view message;
  std::string domain;
  for (gsize i = 0; i < count; ++i) {
    if (std::string_view(fields[i].key) == "MESSAGE")
      message = fieldText(fields[i]);
    else if (std::string_view(fields[i].key) == "GLIB_DOMAIN")
      domain = fieldText(fields[i]);
  }
  if (g_log_writer_default_would_drop(level, domain.c_str()))
    return G_LOG_WRITER_HANDLED;
  if (state.toJournal && g_log_writer_journald(level, fields, count, nullptr) == G_LOG_WRITER_HANDLED)
    return G_LOG_WRITER_HANDLED;
  output(level, domain.empty() ? "ondrel" : domain, message);
  return G_LOG_WRITER_HANDLED;
}

} // namespace

void GlibLogSink::install(std::string subsystem) {
  if (state.installed)
    return;
  state = {.installed = true,
           .subsystem = std::move(subsystem),
           .threshold = levelFromEnvironment(g_getenv("ONDREL_LOG")),
           .toJournal = g_log_writer_is_journald(STDERR_FILENO) != FALSE};
  g_log_set_writer_func(writer, nullptr, nullptr);
  base::setLogSink(sink);
}

bool GlibLogSink::shows(base::LogLevel level) {
  return level >= state.threshold;
}

base::LogLevel GlibLogSink::levelFromEnvironment(const char* value) {
  const std::string_view wanted = value ? value : "";
  if (wanted == "debug")
    return base::LogLevel::debug;
  return wanted == "info" ? base::LogLevel::info : base::LogLevel::notice;
}

std::string GlibLogSink::line(std::string_view time, std::string_view origin, GLogLevelFlags level,
                              std::string_view message) {
  return fmt::format("{} {} {}: {}\n", time, origin, levelName(level), escaped(message));
}

std::string GlibLogSink::escaped(std::string_view message) {
  const bool cut = message.size() > longestMessage;
  const glib::CString valid(
      g_utf8_make_valid(message.data(), static_cast<gssize>(std::min(message.size(), longestMessage))));
  std::string text;
  for (const char* p = valid.get(); *p; p = g_utf8_next_char(p)) {
    const gunichar c = g_utf8_get_char(p);
    if (c == '\n')
      text += "\\n";
    else if (c == '\t')
      text += "\\t";
    else if (c < 0x20 || (c >= 0x7F && c < 0xA0))
      text += fmt::format("\\x{:02x}", c);
    else if (c == 0x2028 || c == 0x2029)
      text += fmt::format("\\u{:04x}", c);
    else
      text.append(p, static_cast<std::size_t>(g_utf8_next_char(p) - p));
  }
  if (cut)
    text += " [cut]";
  return text;
}

} // namespace ondrel::platform::text
