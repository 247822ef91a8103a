#include "scripts/PageTexts.h"

#include "base/Json.h"
#include "base/Translation.h"

#include <string_view>

namespace ondrel::scripts {

namespace {

struct PageText {
  std::string_view name; // in the scripts: TEXTS.<name>
  const char* text;
};

// "%" stands for what the script puts in.
constexpr PageText texts[] = {
    // TRANSLATORS: A button over what is selected in a message.
    {"highlight", base::trMark("Highlight")},
    // TRANSLATORS: % is a number, one or more.
    {"hiddenHighlights", base::trMark("% highlight(s) hidden — open the other emails in this thread to see "
                                      "them, or click to clear")},
    // TRANSLATORS: The title of a message box.
    {"uploading", base::trMark("Uploading via Fastmail Files")},
    // TRANSLATORS: % is a file's name.
    {"uploadingExplained", base::trMark("\"%\" is too large to attach directly. Ondrel is uploading it to "
                                        "Fastmail Files and will add a share link to your email "
                                        "automatically.")},
    // TRANSLATORS: Beside the name of a file that is being sent.
    {"chipUploading", base::trMark("Uploading via Fastmail Files…")},
    // TRANSLATORS: Beside the name of a file that has been sent.
    {"chipShared", base::trMark("via Fastmail Files")},
    // TRANSLATORS: In the letter, followed by a link.
    {"shared", base::trMark("Shared via Fastmail Files:")},
    // TRANSLATORS: In the letter; % is a file's name.
    {"notShared", base::trMark("Could not share \"%\" via Fastmail Files — attach it manually.")},
};

constexpr std::string_view place = "{/* texts */}";

} // namespace

std::string withPageTexts(std::string script) {
  const auto at = script.find(place);
  if (at == std::string::npos)
    return script;
  std::string object = "{";
  for (const auto& [name, text] : texts)
    object.append(name).append(":").append(base::jsonStringLiteral(base::tr(text))).append(",");
  return script.replace(at, place.size(), object + "}");
}

} // namespace ondrel::scripts
