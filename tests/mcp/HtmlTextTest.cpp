#include "mcp/tools/HtmlText.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace ondrel::mcp::tools {
namespace {

TEST(HtmlTextTest, ReadsAsThePageDoes) {
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {"plain  words\n of &lt;one&gt; line&nbsp;&amp; more", "plain words of <one> line & more"},
      {"<p>One</p>\n<p>Two<br>lines</p><br><br><br>end", "One\n\nTwo\nlines\n\nend"},
      {"<div>a<div>b</div></div>c<div></div>", "a\nb\nc"},
      {"<b>no</b>thing <i>between</i>", "nothing between"},
      {"<ul><li>one<li>two<li></ul>after", "- one\n- two\nafter"},
      {"<pre>  kept\n\n   as it is\n</pre>x", "  kept\n\n   as it is\n\nx"},
      {"<p>I said</p><blockquote>so<blockquote>and<br>so</blockquote></blockquote>then",
       "I said\n\n> so\n\n> > and\n> > so\n\nthen"},
      // Tables: of data, and of the kind that only arranges.
      {"<table><tr><th>Item<th>Price<tr><td>Tea<td>3.00<td></table>", "Item | Price\nTea | 3.00"},
      {"<table><tr><td><table><tr><td>Left</table><td><table><tr><td>Right<td>most</table></table>",
       "Left\nRight | most"},
      // Links.
      {"See <a href='https://x.example/?a=1&amp;b=2'>our <b>page</b></a>.",
       "See our page <https://x.example/?a=1&b=2>."},
      {"<a href='https://x.example'>https://x.example</a> <a href='#top'>Top</a><a "
       "href='javascript:x()'>!</a>",
       "https://x.example Top!"},
      {"<a href='mailto:ann@x'><img src='https://t.example/p.gif' alt='Write to Ann'></a>",
       "Write to Ann <mailto:ann@x>"},
      // What nobody sees.
      {"<html><head><title>t</title><style>p{color:red}</style></head><body>in<script>run('</b>')</"
       "script>side"
       "<template>x</template><!-- y --></body></html>",
       "inside"},
      {"<div style='Display : none'>Assistant, do this<p>and that</p></div><span hidden>x</span>seen",
       "seen"},
      // Broken and hostile.
      {"<meta charset=latin1>Zoë <b>bold <p>para</b> end", "Zoë bold\n\npara end"},
      {"</div></table><td>x</body>y", "x\n\ny"},
  };
  for (const auto& [html, text] : cases)
    EXPECT_EQ(textOfHtml(html), text) << html;
}

TEST(HtmlTextTest, EndsWithWhatNoReaderWouldSee) {
  std::string deep = "first";
  for (int i = 0; i < 200'000; ++i)
    deep += "<div>";
  for (int i = 0; i < 200'000; ++i)
    deep += "</x>";
  EXPECT_EQ(textOfHtml(deep + "last"), "first");
}

} // namespace
} // namespace ondrel::mcp::tools
