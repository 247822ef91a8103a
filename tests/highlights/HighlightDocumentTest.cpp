#include "highlights/HighlightDocument.h"

#include <gtest/gtest.h>

namespace ondrel::highlights {
namespace {

// From one marker to the next.
std::string between(const std::string& text, std::string_view from, std::string_view to) {
  const auto start = text.find(from);
  const auto end = text.find(to, start);
  return start == text.npos || end == text.npos ? "absent" : text.substr(start, end + to.size() - start);
}

TEST(HighlightDocument, IsTheSameToTheLetter) {
  HighlightDocument document;
  document.date = "Jan 5, 2025, 9:15 AM";
  document.iconURL = "data:image/png;base64,QUJD";
  document.projectSiteURL = "https://project.example/";
  document.payload = "W10=";
  document.forFile = true;
  document.entries = {{.url = "https://x/1?a=b&c",
                       .subject = "A > B",
                       .prefix = "it's ",
                       .exact = "<b>\"&",
                       .suffix = " end"},
                      {.url = "https://x/2", .subject = "", .prefix = "", .exact = "x", .suffix = ""}};
  const auto html = document.html();
  EXPECT_TRUE(html.starts_with("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"UTF-8\">\n"
                               "<title>Ondrel Highlights</title>\n"
                               "<link rel=\"icon\" href=\"data:image/png;base64,QUJD\">\n<style>\n:root {"))
      << html;
  const auto body = html.find("</style>");
  ASSERT_NE(body, html.npos);
  EXPECT_EQ(
      html.substr(body),
      "</style>\n</head>\n<body>\n<div class=\"page-header\">\n"
      "<img class=\"app-icon\" src=\"data:image/png;base64,QUJD\" alt=\"\">\n<div>\n"
      "<h1>Ondrel Highlights</h1>\n<p class=\"meta\">Exported Jan 5, 2025, 9:15 AM — 2 highlights"
      "</p>\n</div>\n</div>\n"
      "<div class=\"highlight\">\n<a class=\"subject\" href=\"https://x/1?a=b&amp;c\">A &gt; B</a>\n"
      "<p class=\"quote\"><span class=\"context\">it's </span><mark>&lt;b&gt;&quot;&amp;</mark>"
      "<span class=\"context\"> end</span></p>\n</div>\n"
      "<div class=\"highlight\">\n<a class=\"subject\" href=\"https://x/2\"></a>\n"
      "<p class=\"quote\"><span class=\"context\"></span><mark>x</mark><span class=\"context\"></span>"
      "</p>\n</div>"
      "\n<p class=\"footer-note\">Exported from <a href=\"https://project.example/\">Ondrel</a>. You can "
      "also use File → Import Highlights… to bring this file back into Ondrel.</p>\n"
      "<script type=\"application/json\" id=\"ondrel-highlights-data\" data-encoding=\"base64\">W10="
      "</script>\n</body>\n</html>");
}

TEST(HighlightDocument, LeavesOutWhatIsMissing) {
  HighlightDocument document;
  document.date = "<now>";
  document.forFile = true;
  const auto html = document.html();
  EXPECT_TRUE(html.contains("<title>Ondrel Highlights</title>\n\n<style>\n"));
  EXPECT_EQ(
      html.substr(html.find("<body>")),
      "<body>\n<div class=\"page-header\">\n\n<div>\n<h1>Ondrel Highlights</h1>\n<p class=\"meta\">"
      "Exported &lt;now&gt; — 0 highlights</p>\n</div>\n</div>\n<p class=\"empty\">No highlights yet.</p>"
      "\n<p class=\"footer-note\">Exported from <a href=\"\">Ondrel</a>.</p>\n\n</body>\n</html>");

  document.payload = "W10=";
  EXPECT_TRUE(document.html().contains("Import Highlights…"));
  document.forFile = false;
  EXPECT_FALSE(document.html().contains("Import Highlights…"));
  EXPECT_TRUE(document.html().contains(">W10=</script>"));
  document.entries.resize(1);
  EXPECT_EQ(between(document.html(), " — ", "<"), " — 1 highlight<");
}

TEST(HighlightDocument, HasTheColoursOfBothStyles) {
  const auto html = HighlightDocument{}.html();
  const auto light = between(html, ":root {", "}");
  const auto dark = between(html, "@media (prefers-color-scheme: dark)", "}");
  struct Case {
    const char* property;
    const char* light;
    const char* dark;
  };
  for (const auto& [property, inLight, inDark] :
       {Case{"--bg", "#ffffff", "#1c1c1e"}, Case{"--bg-alt", "#f5f5f7", "#2c2c2e"},
        Case{"--text", "#1d1d1f", "#f5f5f7"}, Case{"--text-2", "#6e6e73", "#98989d"},
        Case{"--border", "rgba(0,0,0,.08)", "rgba(255,255,255,.1)"}, Case{"--mark-bg", "#ffe066", "#7a5c00"},
        Case{"--mark-text", "#1d1d1f", "#ffe9a8"}}) {
    EXPECT_TRUE(light.contains(std::string(property) + ": " + inLight + ";")) << property;
    EXPECT_TRUE(dark.contains(std::string(property) + ": " + inDark + ";")) << property;
  }
  EXPECT_TRUE(light.contains("--accent: #0A84FF;"));
  EXPECT_FALSE(dark.contains("--accent"));
}

} // namespace
} // namespace ondrel::highlights
