#include "integrations/SpellingSettings.h"

#include "settings/AppSettings.h"
#include "support/FakeDesktop.h"
#include "support/FakeDesktopServices.h"
#include "support/TestSite.h"

#include <gtest/gtest.h>

namespace ondrel::integrations {

using Tags = std::vector<std::string>;

TEST(Spelling, ChecksTheUsersLanguagesUntilTheyChoose) {
  support::FakeSpellChecker checker;
  checker.installed = {{"de_AT", ""}, {"de_DE", ""}, {"en_AU", ""}, {"en_US", ""}, {"eo", ""}, {"fr_FR", ""}};
  const struct {
    Tags languages;
    Tags checked;
  } table[] = {
      {{"de_AT.UTF-8", "de_AT", "de.UTF-8", "de", "C"}, {"de_AT"}},
      {{"de_CH.UTF-8", "de_CH", "de", "en_GB", "en", "C"}, {"de_DE", "en_US"}},
      {{"eo", "C"}, {"eo"}},
      {{"ja_JP", "ja", "C"}, {}},
      {{"C.UTF-8", "C"}, {"en_US"}},
  };
  for (const auto& row : table)
    EXPECT_EQ(dictionariesFor(row.languages, checker.installed), row.checked) << row.languages[0];

  support::FakeDefaults defaults;
  settings::AppSettings settings(defaults, support::testSite());
  SpellingSettings spelling(settings, checker);
  EXPECT_EQ(checker.checked, Tags{"en_US"});
  spelling.setChecked("fr_FR", true);
  EXPECT_EQ(checker.checked, (Tags{"en_US", "fr_FR"}));
  settings.set(settings::keys::checkSpelling, false);
  EXPECT_TRUE(checker.checked.empty());
  checker.installed.pop_back(); // its package has been removed
  settings.set(settings::keys::checkSpelling, true);
  EXPECT_EQ(checker.checked, Tags{"en_US"});
  spelling.setChecked("en_US", false);
  EXPECT_TRUE(checker.checked.empty()) << "none is a choice too";
}

} // namespace ondrel::integrations
