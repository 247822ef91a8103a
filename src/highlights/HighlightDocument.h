#pragma once

#include "base/Translation.h"

#include <optional>
#include <string>
#include <vector>

namespace ondrel::highlights {

// The highlights as one HTML page that stands alone: for people to read, and for the program to read back.
struct HighlightDocument {
  // A highlight with its message. All texts come from mail or from files and are put in as text only.
  struct Entry {
    std::string id;      // of the highlight; isn't shown
    std::string url;     // of the message in the web application; empty when it could not be looked up
    std::string subject; // then empty
    std::string prefix;
    std::string exact;
    std::string suffix;

    bool operator==(const Entry&) const = default;
  };

  std::string date;                   // of now, as people write it
  std::optional<std::string> iconURL; // a data URL
  std::string projectSiteURL;         // from the site's file; put in as it is
  std::vector<Entry> entries;         // in the order of showing
  std::optional<std::string> payload; // base64
  bool forFile = false;               // it will leave the program and may come back
  std::string problem;                // why messages are missing, in a sentence; empty for nothing
  std::string whenEmpty = base::tr("No highlights yet.");

  std::string html() const;
  // With those entries alone whose text or subject holds each word of the search, letters' case aside. All of
  // them for a search without words.
  HighlightDocument matching(const std::string& search) const;

  bool operator==(const HighlightDocument&) const = default;
};

} // namespace ondrel::highlights
