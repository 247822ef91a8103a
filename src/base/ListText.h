#pragma once

#include <string>
#include <vector>

// Lists of names in a sentence, in the user's language. Any thread.
namespace ondrel::base {

// "a, b, c"; empty for none.
std::string commaList(const std::vector<std::string>& items);
// "a, b and c"; empty for none.
std::string andList(std::vector<std::string> items);

} // namespace ondrel::base
