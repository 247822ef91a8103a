#include "highlights/HighlightDocument.h"

#include <gtest/gtest.h>

namespace ondrel::highlights {
namespace {

TEST(HighlightDocument, EscapesWhatMailHoldsAndLeavesOutWhatIsMissing) {
  HighlightDocument document;
  document.date = "<now>";
  document.forFile = true;
  EXPECT_FALSE(document.html().contains("<img") || document.html().contains("<script"));
  EXPECT_TRUE(document.html().contains("Exported &lt;now&gt; — 0 highlights</p>"));
  EXPECT_TRUE(document.html().contains("<p class=\"empty\">No highlights yet.</p>"));

  document.iconURL = "data:image/png;base64,QUJD";
  document.projectSiteURL = "https://project.example/";
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
  EXPECT_EQ(html.substr(html.find("</style>")), R"(</style>
</head>
<body>
<div class="page-header">
<img class="app-icon" src="data:image/png;base64,QUJD" alt="">
<div>
<h1>Ondrel Highlights</h1>
<p class="meta">Exported &lt;now&gt; — 2 highlights</p>
</div>
</div>
<p class="problem">&lt;why&gt;</p>
<div class="highlight">
<a class="subject" href="https://x/1?a=b&amp;c">A &gt; B</a>
<p class="quote"><span class="context">it's </span><mark>&lt;b&gt;&quot;&amp;</mark><span class="context"> &lt;end</span></p>
</div>
<div class="highlight">
<span class="subject">Message not looked up</span>
<p class="quote"><span class="context"></span><mark>x</mark><span class="context"></span></p>
</div>
<p class="footer-note">Exported from <a href="https://project.example/">Ondrel</a>. You can also use Import Highlights… in the main menu to bring this file back into Ondrel.</p>
<script type="application/json" id="ondrel-highlights-data" data-encoding="base64">W10=</script>
</body>
</html>)");
  document.forFile = false;
  EXPECT_FALSE(document.html().contains("Import Highlights…"));
}

TEST(HighlightDocument, IsSearchedByTextAndSubject) {
  HighlightDocument document;
  document.entries = {{"1", "https://x/1", "Tea in Zürich", "see the ", "green\n\t leaves", " there"},
                      {"2", "", "", "", "Straße 7", ""}};
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"", {"1", "2"}},
      {" \t\u3000", {"1", "2"}},
      {"ZÜRICH leaves", {"1"}},
      {"the GREEN", {"1"}},
      {"strasse", {"2"}},
      {"7", {"2"}},
      {"tea strasse", {}},
      {"looked", {}},
      {"https", {}},
      {"\xFF", {}},
  };
  for (const auto& [search, expected] : cases) {
    std::vector<std::string> ids;
    for (const auto& entry : document.matching(search).entries)
      ids.push_back(entry.id);
    EXPECT_EQ(ids, expected) << search;
  }
  EXPECT_TRUE(
      document.matching("x").html().contains(R"(<p class="empty">No highlights match the search.</p>)"));
  document.entries.clear();
  EXPECT_TRUE(document.matching("x").html().contains("No highlights yet."));
}

} // namespace
} // namespace ondrel::highlights
