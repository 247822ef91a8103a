#pragma once

#include <string>

namespace ondrel::scripts {

// The script with the texts that it shows to the user, in the user's language, where it asks for them: the
// piece shared/texts.js. What else is in it stays.
std::string withPageTexts(std::string script);

} // namespace ondrel::scripts
