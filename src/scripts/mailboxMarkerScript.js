// Puts a yellow corner on each row of the message list whose thread has highlights. The application draws
// rows anew all the time, so the corners are made again from the set of threads after each change.

const LINK_SELECTOR = 'a[href*="/mail/"]';
const MARK_ATTR = 'data-ondrel-mark';
const MARK_SELECTOR = `[${MARK_ATTR}]`;
const TICK_MS = 300;
// A triangle in the top left corner.
const MARK_STYLE = {
  position: 'absolute',
  top: '0',
  left: '0',
  width: '0',
  height: '0',
  borderStyle: 'solid',
  borderWidth: '10px 10px 0 0',
  borderColor: '#f5c518 transparent transparent transparent',
  pointerEvents: 'none',
  zIndex: '5',
};

let markedThreadIds = new Set();
let listEl = null;
let readyPosted = false;

const log = logger('mailbox marks: ');

// The last piece of the link's path is the thread's id, with or without ".EMAIL-ID". Null for none.
const threadIdForRow = (li) => {
  const link = li.querySelector(LINK_SELECTOR);
  try {
    return new URL(link.href).pathname.split('/').at(-1).split('.')[0] || null;
  } catch {
    return null;  // no link, or one that leads nowhere
  }
};

const ensureMark = (li) => {
  if (li.querySelector(MARK_SELECTOR)) {
    return;
  }
  if (getComputedStyle(li).position === 'static') {
    li.style.position = 'relative';
  }
  const mark = styled('div', MARK_STYLE);
  mark.setAttribute(MARK_ATTR, '1');
  li.prepend(mark);
};

const reconcile = () => {
  if (!listEl) {
    log('reconcile skipped, no listEl');
    return;
  }
  const rows = [...listEl.querySelectorAll('li')];
  let marked = 0;
  for (const li of rows) {
    if (markedThreadIds.has(threadIdForRow(li))) {
      ensureMark(li);
      ++marked;
    } else {
      li.querySelector(MARK_SELECTOR)?.remove();
    }
  }
  log(`reconciled ${rows.length} row(s) — ${marked} marked, ${rows.length - marked} unmarked`);
};

// From the program: the ids of all threads with highlights.
window.__ondrelApplyMailboxHighlightMarks = (threadIds) => {
  const ids = Array.isArray(threadIds) ? threadIds : [];
  markedThreadIds = new Set(ids.filter((id) => typeof id === 'string'));
  log(`received ${ids.length} threadId(s) [${ids.join(',')}], listEl=${listEl ? 'found' : 'null'}`);
  reconcile();
};

const tick = () => {
  if (!document.body?.contains(listEl)) {
    listEl = document.querySelector(LIST_SELECTOR);
  }
  if (listEl && !readyPosted) {
    readyPosted = true;
    post({type: 'ondrelMailboxMarkersReady'});
  }
  reconcile();
};

// Shown again as it was left: the marks may be others by now.
window.addEventListener('pageshow', ({persisted}) => {
  if (persisted) {
    readyPosted = false;
    tick();
  }
});

// Adding a corner is a change as well: it brings one more tick, which changes nothing.
new MutationObserver(throttle(tick, TICK_MS))
    .observe(document.documentElement, {childList: true, subtree: true});
tick();
