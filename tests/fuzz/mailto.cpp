// A link from anywhere: whatever its bytes, the address that comes of it is one of the editor, with nothing
// in it but text for the five fields, and a draft can be cut to any size.

#include "base/Text.h"
#include "base/Url.h"
#include "integrations/MailtoDraft.h"

#include <cstdint>
#include <cstdlib>

namespace {

using namespace ondrel;

constexpr std::string_view start = "https://app.example.com/mail/compose";

void require(bool holds) {
  if (!holds)
    std::abort();
}

void checkText(const std::string& text, bool isOneLine) {
  require(base::isValidUtf8(text));
  for (const char c : text)
    require((static_cast<unsigned char>(c) >= 0x20 && c != 0x7F) ||
            (!isOneLine && std::string_view("\r\n\t").contains(c)));
}

void checkAddress(const integrations::MailtoDraft& draft) {
  const auto address = integrations::composeURL("https://app.example.com/", draft, {});
  const auto url = base::Url::parse(address);
  require(url && address.starts_with(start) && url->path() == "/mail/compose");
  require(url->queryItem("to").value_or("") == draft.to);
  require(url->queryItem("subject") == draft.subject && url->queryItem("body") == draft.body);
  require(url->queryItem("cc") == draft.cc && url->queryItem("bcc") == draft.bcc);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  integrations::MailtoDraft draft(text);
  checkText(draft.to, true);
  for (const auto* header : {&draft.subject, &draft.cc, &draft.bcc})
    checkText(header->value_or(""), true);
  checkText(draft.body.value_or(""), false);
  checkAddress(draft);

  const auto whole = draft;
  const std::size_t room = size > 0 ? data[0] : 0;
  const auto cut = draft.shortenTo(room);
  require(cut.empty() == (draft == whole));
  checkAddress(draft);
  constexpr std::size_t names = std::string_view("?to=&cc=&bcc=&subject=&body=").size();
  require(integrations::composeURL("", draft, {}).size() <=
          std::string_view("mail/compose").size() + names + room);
  return 0;
}
