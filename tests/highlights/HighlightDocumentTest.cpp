#include "highlights/HighlightDocument.h"

#include <gtest/gtest.h>

namespace ondrel::highlights {
namespace {

std::string from(const std::string& text, std::string_view start) {
  const auto position = text.find(start);
  return position == text.npos ? "absent" : text.substr(position);
}

TEST(HighlightDocument, IsTheSameToTheLetter) {
  HighlightDocument document;
  document.date = "Jan 5, 2025, 9:15 AM";
  document.iconURL = "data:image/png;base64,QUJD";
  document.projectSiteURL = "https://project.example/";
  document.payload = "W10=";
  document.forFile = true;
  document.entries = {
      {.id = "h1",
       .url = "https://x/1?a=b&c",
       .subject = "A > B",
       .prefix = "it's ",
       .exact = "<b>\"&",
       .suffix = " <end"},
      {.id = "h2", .url = "https://x/2", .subject = "", .prefix = "", .exact = "x", .suffix = ""}};
  const auto html = document.html();
  EXPECT_TRUE(html.starts_with("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"UTF-8\">\n"
                               "<title>Ondrel Highlights</title>\n"
                               "<link rel=\"icon\" href=\"data:image/png;base64,QUJD\">\n<style>\n:root {"))
      << html;
  const auto dark = from(html, "@media (prefers-color-scheme: dark)");
  for (const auto* inLight :
       {"accent: #0A84FF", "bg: #ffffff", "bg-alt: #f5f5f7", "text: #1d1d1f", "text-2: #6e6e73",
        "border: rgba(0,0,0,.08)", "mark-bg: #ffe066", "mark-text: #1d1d1f"})
    EXPECT_TRUE(html.contains(inLight) && !dark.contains(inLight)) << inLight;
  for (const auto* inDark : {"bg: #1c1c1e", "bg-alt: #2c2c2e", "text: #f5f5f7", "text-2: #98989d",
                             "border: rgba(255,255,255,.1)", "mark-bg: #7a5c00", "mark-text: #ffe9a8"})
    EXPECT_TRUE(dark.contains(inDark)) << inDark;
  EXPECT_EQ(from(html, "</style>"), R"(</style>
</head>
<body>
<div class="page-header">
<img class="app-icon" src="data:image/png;base64,QUJD" alt="">
<div>
<h1>Ondrel Highlights</h1>
<p class="meta">Exported Jan 5, 2025, 9:15 AM — 2 highlights</p>
</div>
</div>
<div class="highlight">
<a class="subject" href="https://x/1?a=b&amp;c">A &gt; B</a>
<p class="quote"><span class="context">it's </span><mark>&lt;b&gt;&quot;&amp;</mark><span class="context"> &lt;end</span></p>
</div>
<div class="highlight">
<a class="subject" href="https://x/2"></a>
<p class="quote"><span class="context"></span><mark>x</mark><span class="context"></span></p>
</div>
<p class="footer-note">Exported from <a href="https://project.example/">Ondrel</a>. You can also use Import Highlights… in the main menu to bring this file back into Ondrel.</p>
<script type="application/json" id="ondrel-highlights-data" data-encoding="base64">W10=</script>
</body>
</html>)");
}

TEST(HighlightDocument, LeavesOutWhatIsMissing) {
  HighlightDocument document;
  document.date = "<now>";
  document.forFile = true;
  EXPECT_TRUE(document.html().contains("<title>Ondrel Highlights</title>\n\n<style>\n"));
  EXPECT_EQ(
      from(document.html(), "<body>"),
      "<body>\n<div class=\"page-header\">\n\n<div>\n<h1>Ondrel Highlights</h1>\n<p class=\"meta\">"
      "Exported &lt;now&gt; — 0 highlights</p>\n</div>\n</div>\n<p class=\"empty\">No highlights yet.</p>"
      "\n<p class=\"footer-note\">Exported from <a href=\"\">Ondrel</a>.</p>\n\n</body>\n</html>");

  document.payload = "W10=";
  document.forFile = false;
  document.entries.resize(1);
  document.problem = "<why>";
  EXPECT_TRUE(document.html().contains(R"(</div>
</div>
<p class="problem">&lt;why&gt;</p>
<div class="highlight">
<span class="subject">Message not looked up</span>
<p class="quote">)"));
  EXPECT_FALSE(document.html().contains("Import Highlights…"));
  EXPECT_TRUE(document.html().contains(">W10=</script>"));
  EXPECT_TRUE(document.html().contains(" — 1 highlight<"));
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
