#pragma once

#include "highlights/file/JsonScanner.h"
#include "highlights/file/PersistedHighlight.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::highlights {

// A highlight on its way from one store to another.
struct ExportedHighlight {
  std::string messageId; // the key that it is kept under
  PersistedHighlight highlight;

  bool operator==(const ExportedHighlight&) const = default;
};

// A JSON array of them, as base64.
std::string encodedPayload(const std::vector<ExportedHighlight>& highlights);

// The payload's text in a document: the first match of id="ondrel-highlights-data"[^>]*>([^<]+)</script>, in
// time linear in the document's length whatever it holds. Points into the document.
std::optional<std::string_view> findPayload(std::string_view document);

// Decodes a payload in small steps, since it may be hundreds of megabytes of anything. Memory is bounded by
// the length of the text and by what the highlights take.
class PayloadDecoder {
 public:
  enum class State {
    working,
    done,
    notBase64,
    corrupted, // base64, but no array of highlights
  };

  // The text must stay where it is until the work is done.
  explicit PayloadDecoder(std::string_view base64) : base64_(base64) {}
  PayloadDecoder(const PayloadDecoder&) = delete;
  PayloadDecoder& operator=(const PayloadDecoder&) = delete;

  // Goes on for a moment; all states but `working` are final.
  State step();
  // Once it is done; else empty.
  std::vector<ExportedHighlight> take();

 private:
  void decodeBase64();
  void decodeRecord();

  std::string_view base64_;
  std::string json_;
  std::optional<JsonScanner> scanner_; // of the JSON, once that is all there
  bool isOpen_ = false;                // behind the array's first bracket
  bool isLast_ = false;                // the array has been closed
  State state_ = State::working;
  std::vector<ExportedHighlight> highlights_;
};

} // namespace ondrel::highlights
