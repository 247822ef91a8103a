// A file that somebody chose to import: what is found in it is what the expression tells, and what is decoded
// can be written and read again.

#include "base/Base64.h"
#include "highlights/file/HighlightPayload.h"

#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using namespace ondrel::highlights;
using State = PayloadDecoder::State;

void require(bool holds) {
  if (!holds)
    std::abort();
}

State decode(std::string_view payload, std::vector<ExportedHighlight>& highlights) {
  PayloadDecoder decoder(payload);
  auto state = decoder.step();
  while (state == State::working)
    state = decoder.step();
  require(decoder.step() == state);
  highlights = decoder.take();
  require(state == State::done || highlights.empty());
  return state;
}

// The JSON library takes a decimal number for the one or the other double next to it.
bool isSameTime(double read, double written) {
  const auto towardsIt = [written](double time) { return std::nextafter(time, written); };
  return towardsIt(towardsIt(read)) == written;
}

void checkFound(std::string_view document) {
  const auto payload = findPayload(document);
  if (!payload)
    return;
  require(!payload->empty() && !payload->contains('<'));
  const auto end = static_cast<std::size_t>(payload->data() - document.data()) + payload->size();
  require(document.substr(end).starts_with("</script>"));
  require(document.substr(0, end).contains("id=\"ondrel-highlights-data\""));
}

void checkDecoded(std::string_view json) {
  const auto payload =
      ondrel::base::base64Encoded({reinterpret_cast<const std::uint8_t*>(json.data()), json.size()});
  std::vector<ExportedHighlight> highlights;
  const auto state = decode(payload, highlights);
  require(state != State::notBase64);
  boost::json::error_code error;
  const auto whole = boost::json::parse(json, error);
  if (state == State::corrupted)
    return;
  // Piece by piece nothing is taken for an array that isn't one.
  require(!error && whole.is_array() && whole.get_array().size() == highlights.size());
  std::vector<ExportedHighlight> again;
  require(decode(encodedPayload(highlights), again) == State::done && again.size() == highlights.size());
  for (std::size_t i = 0; i < again.size(); ++i) {
    require(isSameTime(again[i].highlight.createdAt, highlights[i].highlight.createdAt));
    again[i].highlight.createdAt = highlights[i].highlight.createdAt;
  }
  require(again == highlights);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  checkFound(text);
  checkDecoded(text);
  std::vector<ExportedHighlight> highlights;
  decode(text, highlights);
  return 0;
}
