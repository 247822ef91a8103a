#pragma once

#include <string>
#include <string_view>

namespace ondrel::attachments {

// A text as a search sees it: without the differences of case and accents, and in one form where Unicode has
// several for the same ("ﬁ" and "fi"). Made character by character, and the same for a text and its lower
// case: so what holds another text after lower-casing both also does after this. Bytes that are no UTF-8
// become U+FFFD.
std::string searchKey(std::string_view text);
void appendSearchKey(std::string& key, std::string_view text);

// The first place of the text at or behind `from`; npos where there is none. For long searched texts: as fast
// as the memory, also where the beginning of what is looked for is frequent.
std::size_t findFrom(std::string_view searched, std::string_view text, std::size_t from);

} // namespace ondrel::attachments
