#pragma once

#include <cctype>
#include <cstdlib>
#include <string>

namespace ondrel::support {

// A catalogue of the language "pseudo" in the folder: what is in the sources in English, longer and in marks.
inline bool makePseudoLocale(const std::string& folder) {
  return std::system((TRANSLATIONS " --pseudo '" + folder + "'").c_str()) == 0;
}

// Whether a text that is shown has been translated, or has nothing in it to translate.
inline bool isTranslated(const std::string& text) {
  int depth = 0;
  int letters = 0; // one after the other, of English
  for (std::size_t i = 0; i < text.size(); ++i) {
    depth += text.compare(i, 3, "⟦") == 0 ? 1 : text.compare(i, 3, "⟧") == 0 ? -1 : 0;
    letters = depth == 0 && std::isalpha(static_cast<unsigned char>(text[i])) ? letters + 1 : 0;
    if (letters > 1)
      return false;
  }
  return true;
}

} // namespace ondrel::support
