#pragma once

#include "base/Url.h"

#include <chrono>
#include <compare>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace ondrel::integrations {

// A short notice of the project to all running copies.
struct Announcement {
  enum class Severity { info, warning, critical };
  using Time = std::chrono::sys_time<std::chrono::milliseconds>;

  std::string id;
  std::string message; // as it came, of any length
  Severity severity = Severity::info;
  std::optional<std::string> minAppVersion; // the lowest version that shows it
  std::optional<std::string> maxAppVersion; // the highest
  std::optional<Time> expiresAt;
  // Has more to tell. A page of the web over https or on this machine; others are left out.
  std::optional<base::Url> link;

  bool operator==(const Announcement&) const = default;

  // From JSON whose keys are the fields' names. The error is a line for the log.
  static std::expected<Announcement, std::string> decode(std::string_view json);

  bool isExpired(Time now) const { return expiresAt && *expiresAt < now; }
  // Whether it is meant for a version of the program.
  bool isFor(std::string_view version) const;
};

// Compares number by number: 1.10 is higher than 1.9, and 1.2 equals 1.2.0. What is no number counts as 0.
std::strong_ordering compareVersions(std::string_view a, std::string_view b);

} // namespace ondrel::integrations
