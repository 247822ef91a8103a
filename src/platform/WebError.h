#pragma once

#include "base/Translation.h"

#include <string>
#include <string_view>

namespace ondrel::platform {

// A failed load, in the domains and codes below whatever engine runs.
struct WebError {
  enum class Domain {
    network, // it couldn't be fetched
    policy,  // the engine or the program didn't want it
  };

  Domain domain = Domain::network;
  int code = 0;
  std::string description;     // for the log
  std::string failingURL = {}; // what was asked for, redirects followed; empty where the engine doesn't tell

  bool operator==(const WebError&) const = default;

  // For people.
  std::string inWords() const { return base::tr(description.c_str()); }

  // Codes of Domain::network.
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

  // Codes of Domain::policy.
  static constexpr int frameLoadInterrupted = 102; // by a policy change: it became a download, or was refused

  // What the log calls the domain; its readers know the words.
  std::string_view domainName() const {
    return domain == Domain::network ? "NSURLErrorDomain" : "WebKitErrorDomain";
  }
  bool isCancelled() const { return domain == Domain::network && code == cancelled; }
  bool isInterruptedByPolicy() const { return domain == Domain::policy && code == frameLoadInterrupted; }
};

} // namespace ondrel::platform
