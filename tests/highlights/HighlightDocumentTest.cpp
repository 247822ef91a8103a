#include "highlights/HighlightDocument.h"

#include <gtest/gtest.h>

namespace ondrel::highlights {
namespace {

TEST(HighlightDocument, EscapesWhatMailHoldsAndLeavesOutWhatIsMissing) {
  HighlightDocument document;
  document.date = "<now>";
  document.forFile = true;
  EXPECT_FALSE(document.html().contains("<img") || document.html().contains("<script"));

  document.iconURL = "data:image/png;base64,QUJD";
  document.payload = "W10=";
  document.problem = "<why>";
  document.entries = {{.id = "h1",
                       .url = "https://x/1?a=b&c",
                       .subject = "A > B",
                       .prefix = "it's ",
                       .exact = "<b>\"&",
                       .suffix = " <end"},
                      {.id = "h2", .url = "", .subject = "", .prefix = "", .exact = "x", .suffix = ""}};
  const auto html = document.html();
  for (const auto* part :
       {"Exported &lt;now&gt; — 2 highlights<", ">&lt;why&gt;<", R"( src="data:image/png;base64,QUJD")",
        R"( href="https://x/1?a=b&amp;c">A &gt; B</a>)",
        R"(>it's </span><mark>&lt;b&gt;&quot;&amp;</mark><span class="context"> &lt;end<)",
        ">Message not looked up</span>", R"( data-encoding="base64">W10=</script>)"})
    EXPECT_TRUE(html.contains(part)) << part << " in\n" << html;
  document.forFile = false;
  EXPECT_FALSE(document.html().contains("Import Highlights…"));
}

TEST(HighlightDocument, IsSearchedByTextAndSubject) {
  HighlightDocument document;
  document.entries = {{"1", "https://x/1", "Tea in Zürich", "see the ", "green\n\t leaves", " there"},
                      {"2", "", "", "", "Straße 7", ""}};
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"", {"1", "2"}},   {" \t\u3000", {"1", "2"}}, {"ZÜRICH leaves", {"1"}}, {"the GREEN", {"1"}},
      {"strasse", {"2"}}, {"tea strasse", {}},       {"looked", {}},           {"\xFF", {}},
  };
  for (const auto& [search, expected] : cases) {
    std::vector<std::string> ids;
    for (const auto& entry : document.matching(search).entries)
      ids.push_back(entry.id);
    EXPECT_EQ(ids, expected) << search;
  }
}

} // namespace
} // namespace ondrel::highlights
