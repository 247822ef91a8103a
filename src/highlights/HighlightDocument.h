#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ondrel::highlights {

// The highlights as one HTML page that stands alone: for people to read, and for the program to read back.
struct HighlightDocument {
  // A highlight with its message. All texts come from mail or from files and are put in as text only.
  struct Entry {
    std::string url; // of the message in the web application
    std::string subject;
    std::string prefix;
    std::string exact;
    std::string suffix;
  };

  std::string date;                   // of now, as people write it
  std::optional<std::string> iconURL; // a data URL
  std::string projectSiteURL;         // from the site's file; put in as it is
  std::vector<Entry> entries;         // in the order of showing
  std::optional<std::string> payload; // base64
  bool forFile = false;               // it will leave the program and may come back

  std::string html() const;
};

} // namespace ondrel::highlights
