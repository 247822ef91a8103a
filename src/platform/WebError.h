#pragma once

#include <string>
#include <string_view>

namespace ondrel::platform {

// A failed load, in the domains and codes below whatever engine runs.
struct WebError {
  std::string domain;
  int code = 0;
  std::string description;     // for people and the log
  std::string failingURL = {}; // what was asked for, redirects followed; empty where the engine doesn't tell

  bool operator==(const WebError&) const = default;

  static constexpr std::string_view urlDomain = "NSURLErrorDomain";
  static constexpr std::string_view webKitDomain = "WebKitErrorDomain";

  // Codes of urlDomain.
  static constexpr int unknown = -1;
  static constexpr int cancelled = -999;
  static constexpr int badURL = -1000;
  static constexpr int timedOut = -1001;
  static constexpr int cannotFindHost = -1003;
  static constexpr int cannotConnectToHost = -1004;
  static constexpr int networkConnectionLost = -1005;
  static constexpr int notConnectedToInternet = -1009;
  static constexpr int badServerResponse = -1011;
  static constexpr int cannotDecodeContentData = -1016;
  static constexpr int secureConnectionFailed = -1200;
  static constexpr int serverCertificateUntrusted = -1202;

  // Codes of webKitDomain.
  static constexpr int frameLoadInterrupted = 102; // by a policy change: it became a download, or was refused

  bool isCancelled() const { return domain == urlDomain && code == cancelled; }
  bool isInterruptedByPolicy() const { return domain == webKitDomain && code == frameLoadInterrupted; }
};

} // namespace ondrel::platform
