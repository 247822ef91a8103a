// A file that somebody chose to import: what is found in it is what the expression tells, and what is decoded
// can be written and read again.

#include "base/Base64.h"
#include "highlights/file/HighlightPayload.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using namespace ondrel::highlights;
using State = PayloadDecoder::State;
namespace json = boost::json;

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
bool isSameNumber(double read, double written) {
  const auto towardsIt = [written](double number) { return std::nextafter(number, written); };
  return towardsIt(towardsIt(read)) == written;
}

bool isSame(const json::value& read, const json::value& written) {
  if (read.is_double() && written.is_double())
    return isSameNumber(read.get_double(), written.get_double());
  if (read.is_array() && written.is_array())
    return std::ranges::equal(read.get_array(), written.get_array(), isSame);
  if (read.is_object() && written.is_object())
    return std::ranges::equal(read.get_object(), written.get_object(),
                              [](const auto& one, const auto& other) {
                                return one.key() == other.key() && isSame(one.value(), other.value());
                              });
  return read == written;
}

// What a later version of the program has written.
bool isSameFurther(const std::string& read, const std::string& written) {
  return read == written ||
         (!read.empty() && !written.empty() && isSame(json::parse(read), json::parse(written)));
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
    auto& read = again[i].highlight;
    const auto& written = highlights[i].highlight;
    require(isSameNumber(read.createdAt, written.createdAt) && isSameFurther(read.further, written.further));
    read.createdAt = written.createdAt;
    read.further = written.further;
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
