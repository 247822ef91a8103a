// What painting the highlights of a long conversation costs the page. Prints one line of JSON with the
// medians in milliseconds, for bench/run.
#include "EngineWindow.h"
#include "PageDelegate.h"
#include "async/sleep.h"
#include "platform/linux/text/ResourceText.h"
#include "scripts/PageScriptSource.h"
#include "web/WebViewConfiguration.h"

#include <boost/json/value.hpp>
#include <fmt/core.h>

#include <string>
#include <vector>

namespace {

using namespace ondrel;
using namespace ondrel::bench;
using namespace std::chrono_literals;

constexpr int rounds = 15;
constexpr int warmUpRounds = 3;
constexpr async::Duration deadline = 30s;

// 20 messages of 50 kB of text in small paragraphs with links, and 50 highlights in each: every third goes
// from one text node into the next, all stand on words that are repeated before them.
constexpr std::string_view pageSource = R"js(
  const words = 'the mail that came on Monday asks again for a table of oak with drawers and brass knobs'.split(' ');
  let state = 1;
  const random = (limit) => (state = state * 48271 % 2147483647) % limit;
  const phrase = (count) => Array.from({length: count}, () => words[random(words.length)]).join(' ');
  const paragraph = () => `<p>${phrase(30)} <a href=https://page.example/>${phrase(4)}</a> ${phrase(30)}</p>\n`;
  const message = () => {
    let [html, length] = ['', 0];
    while (length < 50000) {
      const next = paragraph();
      html += next;
      length += next.replace(/<[^>]*>/g, '').length;
    }
    return html;
  };
  const messages = Array.from({length: 20}, message);
  document.body.innerHTML =
      '<section class=v-MessageCard><div class=v-Message-body></div></section>'.repeat(messages.length);
  const bodies = [...document.querySelectorAll('.v-Message-body')];
  window.drawMessages = () => {
    __ondrelApplyHighlights([]);
    bodies.forEach((body, i) => body.innerHTML = messages[i]);
    return document.body.offsetHeight;
  };
  const anchorsOf = (text, container) => Array.from({length: 50}, (_, i) => {
    const start = i % 3 === 0 ? text.indexOf('\n', i * 1000) - 10 : i * 1000;
    const exact = text.slice(start, start + 25);
    let occurrenceIndex = 0;
    for (let at = text.indexOf(exact); at < start; at = text.indexOf(exact, at + 1)) {
      ++occurrenceIndex;
    }
    const context = 'context of thirty-two code units';
    return {id: `00000000-0000-4000-8000-${String(random(1e9)).padStart(12, '0')}`, exact, prefix: context, suffix: context, occurrenceIndex,
            threadId: `T${container}`, createdAt: 1700000000.25};
  });
  window.makeAnchors = () => JSON.stringify(bodies.map((body, i) => anchorsOf(body.textContent, i)));
  window.highlighted = () => new Set([...document.querySelectorAll('mark')].map((mark) => mark.dataset.ondrelHid)).size;
)js";

class Page {
 public:
  explicit Page(platform::WebView& view) : view_(view) {}

  async::Task<boost::json::value> run(std::string source) {
    auto result = co_await view_.evaluate(std::move(source), {}, deadline);
    if (!result)
      fail("the page could not be asked: " + result.error().message);
    co_return std::move(*result);
  }

  // From the program's order to its answer. The clocks of pages are too coarse.
  async::Task<double> timeOf(std::string source) {
    const auto begin = Clock::now();
    co_await run(std::move(source));
    co_return Milliseconds(Clock::now() - begin).count();
  }

 private:
  platform::WebView& view_;
};

async::Task<void> measure(platform::WebView& view, PageDelegate& delegate) {
  view.load("data:text/html,<!doctype html><title>Highlights</title><body>");
  co_await delegate.loaded.wait();
  Page page(view);
  co_await page.run(std::string(pageSource) + "; drawMessages()");
  co_await async::sleep(1s); // the script has found the messages
  const auto anchors = co_await page.run("makeAnchors()");
  const std::string push = "window.__ondrelApplyHighlights(" + std::string(anchors.as_string()) + "), null";

  std::vector<double> apply, layout, reconcile;
  for (int round = -warmUpRounds; round < rounds; ++round) {
    co_await page.run("drawMessages()");
    const double applied = co_await page.timeOf(push);
    const double laidOut = co_await page.timeOf("document.body.offsetHeight");
    const double reconciled = co_await page.timeOf(push);
    const auto count = co_await page.run("highlighted()");
    if (count.to_number<int>() != 1000)
      fail(fmt::format("{} highlights are in the page", count.to_number<int>()));
    co_await async::sleep(500ms); // the tick that follows the changes
    if (round < 0)
      continue;
    apply.push_back(applied);
    layout.push_back(applied + laidOut);
    reconcile.push_back(reconciled);
  }
  fmt::print("{{\"apply\": {:.2f}, \"applyAndLayout\": {:.2f}, \"reconcile\": {:.2f}}}\n",
             median(std::move(apply)), median(std::move(layout)), median(std::move(reconcile)));
}

web::UserScripts highlightScript() {
  const web::PageScripts all(
      scripts::pageScriptSource(platform::text::resourceText, scripts::ConsoleRelay::unwanted));
  auto scripts = all.mainConfiguration()->userScripts;
  std::erase_if(scripts, [](const auto& script) { return script->name != "highlightHostScript"; });
  return scripts;
}

} // namespace

int main() {
  EngineWindow window;
  PageDelegate delegate;
  const auto view = window.factory().make(highlightScript());
  view->setDelegate(&delegate);
  view->addScriptMessageHandler("ondrel");
  window.show(static_cast<GtkWidget*>(view->nativeView().handle));
  runToEnd(measure(*view, delegate));
  return 0;
}
