#include "highlights/HighlightDocument.h"

#include "base/Text.h"
#include "base/Translation.h"

#include <fmt/format.h>

#include <string_view>

namespace ondrel::highlights {

namespace {

constexpr std::string_view head = R"(<!DOCTYPE html>
<html lang="{0}"{1}>
<head>
<meta charset="UTF-8">
<title>{2}</title>
)";

constexpr std::string_view styleSheet = R"(:root {
  --accent: #0A84FF;
  --bg: #ffffff;
  --bg-alt: #f5f5f7;
  --text: #1d1d1f;
  --text-2: #6e6e73;
  --border: rgba(0,0,0,.08);
  --mark-bg: #ffe066;
  --mark-text: #1d1d1f;
}
@media (prefers-color-scheme: dark) {
  :root {
    --bg: #1c1c1e;
    --bg-alt: #2c2c2e;
    --text: #f5f5f7;
    --text-2: #98989d;
    --border: rgba(255,255,255,.1);
    --mark-bg: #7a5c00;
    --mark-text: #ffe9a8;
  }
}
* { box-sizing: border-box; }
body { font-family: system-ui, sans-serif; max-width: 720px; margin: 40px auto; padding: 0 16px; color: var(--text); background: var(--bg); }
.page-header { display: flex; align-items: center; gap: 12px; padding-bottom: 16px; margin-bottom: 20px; border-bottom: 1px solid var(--border); }
.app-icon { width: 44px; height: 44px; border-radius: 22%; flex-shrink: 0; }
h1 { font-size: 1.3em; font-weight: 600; letter-spacing: -.2px; margin: 0; }
.meta { color: var(--text-2); font-size: 0.85em; margin: 2px 0 0; }
.highlight { background: var(--bg-alt); border: 1px solid var(--border); border-radius: 12px; padding: 14px 16px; margin-bottom: 12px; }
.subject { font-weight: 600; text-decoration: none; color: var(--accent); }
.subject:hover { text-decoration: underline; }
.quote { margin: 8px 0 0; line-height: 1.5; }
.context { color: var(--text-2); }
mark { background: var(--mark-bg); color: var(--mark-text); padding: 0 2px; border-radius: 3px; }
.empty { color: var(--text-2); }
.footer-note { margin-top: 24px; padding-top: 14px; border-top: 1px solid var(--border); font-size: 0.8em; color: var(--text-2); }
.footer-note a { color: var(--accent); text-decoration: none; }
.footer-note a:hover { text-decoration: underline; }
.highlight, .page-header, .footer-note { overflow-wrap: anywhere; }
span.subject { color: var(--text-2); }
span.subject:hover { text-decoration: none; }
.problem { font-weight: 600; }
)";

void append(std::string& html, const HighlightDocument::Entry& entry) {
  html.append("<div class=\"highlight\">\n");
  if (entry.url.empty())
    html.append("<span class=\"subject\">")
        .append(base::escapedMarkup(base::tr("Message not looked up")))
        .append("</span>");
  else
    html.append("<a class=\"subject\" href=\"")
        .append(base::escapedMarkup(entry.url))
        .append("\">")
        .append(base::escapedMarkup(entry.subject))
        .append("</a>");
  html.append("\n<p class=\"quote\"><span class=\"context\">")
      .append(base::escapedMarkup(entry.prefix))
      .append("</span><mark>")
      .append(base::escapedMarkup(entry.exact))
      .append("</mark><span class=\"context\">")
      .append(base::escapedMarkup(entry.suffix))
      .append("</span></p>\n</div>");
}

} // namespace

std::string HighlightDocument::html() const {
  const auto title = base::escapedMarkup(base::tr("Ondrel Highlights"));
  // TRANSLATORS: the tag of your language, as pages on the web have it: de, or pt-BR
  const char* const language = base::trIn("language of a page", "en");
  // TRANSLATORS: rtl if your language is written from right to left
  const bool isFromRight = base::trIn("direction of a page", "ltr") == std::string_view("rtl");
  auto html = fmt::format(head, language, isFromRight ? " dir=\"rtl\"" : "", title);
  if (iconURL)
    html.append("<link rel=\"icon\" href=\"").append(*iconURL).append("\">");
  html.append("\n<style>\n").append(styleSheet);
  html.append("</style>\n</head>\n<body>\n<div class=\"page-header\">\n");
  if (iconURL)
    html.append("<img class=\"app-icon\" src=\"").append(*iconURL).append("\" alt=\"\">");
  html.append("\n<div>\n<h1>").append(title).append("</h1>\n<p class=\"meta\">");
  const auto count = base::trPlural("{} highlight", "{} highlights", entries.size(), entries.size());
  // TRANSLATORS: {0} is a date with its time, {1} is "7 highlights"
  html.append(base::escapedMarkup(base::trFormat("Exported {0} — {1}", date, count)));
  html.append("</p>\n</div>\n</div>\n");
  if (!problem.empty())
    html.append("<p class=\"problem\">").append(base::escapedMarkup(problem)).append("</p>\n");
  if (entries.empty())
    html.append("<p class=\"empty\">").append(base::escapedMarkup(whenEmpty)).append("</p>");
  for (const auto& entry : entries) {
    if (&entry != &entries.front())
      html.append("\n");
    append(html, entry);
  }
  const auto program = fmt::format("<a href=\"{}\">Ondrel</a>", projectSiteURL);
  // TRANSLATORS: {} is the name of the program, as a link
  html.append("\n<p class=\"footer-note\">").append(base::trFormat("Exported from {}.", program));
  if (payload && forFile)
    html.append(" ").append(base::escapedMarkup(base::tr(
        "You can also use Import Highlights… in the main menu to bring this file back into Ondrel.")));
  html.append("</p>\n");
  if (payload)
    html.append(R"(<script type="application/json" id="ondrel-highlights-data" data-encoding="base64">)")
        .append(*payload)
        .append("</script>");
  return html.append("\n</body>\n</html>");
}

} // namespace ondrel::highlights
