#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ondrel::platform::packages {

// A package of one version, as PackageKit writes it: "ondrel;1.2-3;amd64;debian-stable-main".
struct PackageId {
  std::string name;
  std::string version;
  std::string architecture;
  std::string text; // the whole of it

  static std::optional<PackageId> parse(std::string_view text);
};

// Whether the version is higher than the other, in the order of Debian's policy, 5.6.12, which that of RPM
// agrees with in all that matters here.
bool isNewerVersion(std::string_view version, std::string_view than);

// A version in short, without what only the package system needs to know; in full where the short form would
// not tell the two apart.
std::string shownVersion(std::string_view version, std::string_view installed);

} // namespace ondrel::platform::packages
