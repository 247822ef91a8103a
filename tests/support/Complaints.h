#pragma once

#include <glib.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace ondrel::support {

// A text in complaints that are none of the program's faults, for the test that sets it.
inline std::string toleratedComplaint;

// From the first call on, what GLib and the libraries that stand on it complain about fails the test that
// runs.
inline void failOnComplaints() {
  constexpr int complaints = G_LOG_LEVEL_WARNING | G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_ERROR;
  static const bool once = [] {
    const auto write = [](GLogLevelFlags level, const GLogField* fields, gsize count, gpointer) {
      for (gsize i = 0; i < count; ++i) {
        const bool isText = std::string_view(fields[i].key) == "MESSAGE";
        const std::string_view text = isText ? static_cast<const char*>(fields[i].value) : "";
        if (isText && (level & complaints) &&
            (toleratedComplaint.empty() || !text.contains(toleratedComplaint)))
          ADD_FAILURE() << "GLib: " << text;
      }
      return G_LOG_WRITER_HANDLED;
    };
    g_log_set_writer_func(write, nullptr, nullptr);
    return true;
  }();
  EXPECT_TRUE(once);
}

} // namespace ondrel::support
