#pragma once

#include <map>
#include <string>

namespace ondrel::demo {

// How often each path of each host was asked for.
struct RequestCounters {
  std::map<std::string, std::map<std::string, unsigned>> byHostAndPath;

  void count(const std::string& host, const std::string& path) { ++byHostAndPath[host][path]; }
};

} // namespace ondrel::demo
