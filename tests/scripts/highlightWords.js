// What the cases of highlights are written with, for all scripts of the page.
// Injected twice, it works once.
const scripts = ['highlightHostScript', 'highlightHostScript'];
const page = (...bodies) => ({scripts, html: bodies.join('')});
const body = (html, id = 'body') => `<div class=v-Message-body id=${id}>${html}</div>`;
const card = (html, classes = '') => `<section class="v-MessageCard ${classes}">${html}</section>`;
const anchor = (id, exact, occurrenceIndex = 0) => ({id, exact, occurrenceIndex, threadId: 'T1'});
const push = (...anchorsByContainer) => __ondrelApplyHighlights(anchorsByContainer);
// Of what is posted only what this tells apart; the whole is told by `posts`.
window.shorten = (line) => line.replace(/^(ondrelHighlightContainersChanged: [^,]*, [^,]*), .*$/s, '$1')
                               .replace(/^(ondrelHighlight(?:Create|Remove|ClearOrphaned): .*), \d+$/s, '$1');
const posts = () => record.splice(0);
const reports = (count, focused = '') => `ondrelHighlightContainersChanged: ${count}, ${focused}`;
const ready = 'ondrelHighlightHostReady';
const start = (count = 1) => same(told(), [reports(count), ready]);
const lost = (id) => `[Ondrel] highlight: text not found for ${id}`;

// The marks, "id@offset:text", each with its offset in its container.
const marks = (container = $('#body')) => [...container.querySelectorAll('mark')].map((mark) => {
  const before = document.createRange();
  before.setStart(container, 0);
  before.setEndBefore(mark);
  return `${mark.dataset.ondrelHid}@${before.toString().length}:${mark.textContent}`;
});
const banner = () => $('[data-ondrel-orphan-banner="1"]');
const banners = () =>
    $$('[data-ondrel-orphan-banner]')
        .map((each) => [each.parentElement.id, each.dataset.ondrelOrphanIds, each.textContent]);
const hidden = (count) =>
    `${count} highlight(s) hidden — open the other emails in this thread to see them, or click to clear`;
const button = () => $$('body > div').find((div) => div.textContent === 'Highlight');

// From one point to the other, each a text in the page and an offset from there.
const pointAt = ([text, offset = 0]) => {
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  while (!walker.nextNode().data.includes(text)) {
  }
  return [walker.currentNode, walker.currentNode.data.indexOf(text) + offset];
};
const select = async (from, to, milliseconds = 150) => {
  getSelection().setBaseAndExtent(...pointAt(from), ...pointAt(to));
  await painted();
  await advance(milliseconds);
};
const uuid = /^[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}$/;
// Gives the anchor that is told, of the first container.
const highlight = async (from, to) => {
  await select(from, to);
  same([press(button(), 'mousedown'), button(), getSelection().rangeCount], [true, undefined, 0]);
  const made = JSON.parse(/^ondrelHighlightCreate: (.*), 0$/s.exec(told().at(-1))[1]);
  same(
      [uuid.test(made.id), ...Object.keys(made).slice(0, 5)],
      [true, 'id', 'exact', 'prefix', 'suffix', 'occurrenceIndex']);
  return made;
};
// As the application draws a message again.
const redraw = (html) => advance(300, $('#body').innerHTML = html);
