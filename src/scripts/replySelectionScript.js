// Lets a reply quote only what was selected in the message. It watches selections and replies without a hand
// in either, and when the editor has opened with the whole quote, puts the selection in its place.
//
//   selection -> lastSelection -> (reply on the same message) -> pendingSwap -> (quote of the application's)
//   -> swapped
//
// Each way of giving up is logged: a swap that silently doesn't happen leaves nothing else to go on.

const FRESHNESS_MS = 30000;
// The application goes on working on a new quote, on the signature below it above all. Raise this if a
// signature still goes missing.
const RICH_SWAP_DELAY_MS = 250;
const RICH_VERIFY_DELAY_MS = 300;
const SELECTION_DEBOUNCE_MS = 150;
const QUOTE_WIDTH = 70;  // of a whole line, with its "> "
const QUOTE_MARKER = '> ';
const setOf = (words) => new Set(words.split(/\s+/));
const TEXT_BLOCK_TAGS = setOf('DIV P LI BLOCKQUOTE TR TABLE UL OL H1 H2 H3 H4 H5 H6 PRE');
const LOG_PREFIX = '[Ondrel] reply-with-selection';
const TABLE_PARTS = setOf('table caption colgroup thead tbody tfoot tr');
// What a quote is made of. Of other elements only what they hold is kept, and of some not even that.
const KEPT_TAGS = setOf(
    `a abbr acronym address article aside b bdi bdo big blockquote br center cite code col dd del dfn dir
           div dl dt em figcaption figure font footer h1 h2 h3 h4 h5 h6 header hr i img ins kbd li main mark nav
           nobr ol p pre q rp rt ruby s samp section small span strike strong sub sup td th time tt u ul var wbr
           ${[...TABLE_PARTS].join(' ')}`);
const DROPPED_TAGS =
    setOf(`script style template noscript title head iframe frame frameset noframes noembed select datalist
           annotation annotation-xml desc metadata defs`);
const KEPT_ATTRIBUTES = setOf(
    `style dir lang title alt hidden align valign width height size border color face bgcolor bordercolor
           cellpadding cellspacing colspan rowspan span nowrap noshade clear compact start reversed type value
           scope headers abbr summary rules frame hspace vspace datetime`);
const LINK_SCHEMES = setOf('http: https: mailto: tel: sms: ftp: webcal:');
const IMAGE_SCHEMES = setOf('http: https: blob: cid:');

let lastSelection = null;   // {content, text, card, capturedAt}
let pendingSwap = null;     // {content, text, capturedAt, otherEditors, quote}
let richSwapArmed = false;  // a rich-text swap is scheduled
let selectionDebounce = 0;
let edits = 0;  // of the user, in any editor
let isSendingInput = false;

const log = (text) => console.log(`${LOG_PREFIX}: ${text}`);
const endSwap = (swap) => {
  if (pendingSwap === swap) {
    pendingSwap = null;
  }
};
const attempt = (what, swap, action) => {
  try {
    action();
  } catch (error) {
    console.log(`${LOG_PREFIX} ${what} failed: ${error}`);
    richSwapArmed = false;
    endSwap(swap);
  }
};

const isStale = ({capturedAt}) => Date.now() - capturedAt > FRESHNESS_MS;

const sendInput = (editor) => {
  isSendingInput = true;
  editor.dispatchEvent(new Event('input', {bubbles: true}));
  isSendingInput = false;
};

// --- What is selected: copied at once, since others change the text nodes under a live range. ---
//
// The copy is made anew of what a quote needs, in a document in which nothing loads or runs, and is never
// written as markup and read again: a parser can take text of the message for elements then. What the
// application does that with later, its drafts, holds nothing of that kind: each tag in what is written is
// one of an element that was let in, since nothing is left that makes a parser read "<" otherwise (styles,
// titles, text fields, comments, elements of other languages).

const inertDocument = document.implementation.createHTMLDocument('');
const spaceOfCopy = new WeakMap();  // copied text -> how its white space collapses

// Past what a form's fields can put in the place of its own properties by their names.
const getterOf = ({prototype}, name) => {
  const {get} = Object.getOwnPropertyDescriptor(prototype, name);
  return (node) => get.call(node);
};
const nodeTypeOf = getterOf(Node, 'nodeType');
const parentOf = getterOf(Node, 'parentNode');
const firstChildOf = getterOf(Node, 'firstChild');
const nextSiblingOf = getterOf(Node, 'nextSibling');
const childNodesOf = getterOf(Node, 'childNodes');
const localNameOf = getterOf(Element, 'localName');
const namespaceOf = getterOf(Element, 'namespaceURI');

const isText = (node) => nodeTypeOf(node) === Node.TEXT_NODE;
const isElement = (node) => nodeTypeOf(node) === Node.ELEMENT_NODE;
const tagOf = (element) => localNameOf(element).toLowerCase();

const isAllowedAddress = (attribute, value) => {
  try {
    const {protocol, pathname} = new URL(value, document.baseURI);
    return attribute === 'href' ?
        LINK_SCHEMES.has(protocol) :
        IMAGE_SCHEMES.has(protocol) || (protocol === 'data:' && /^image\//i.test(pathname));
  } catch {
    return false;
  }
};

const isAllowedAttribute = ({name, value}) => KEPT_ATTRIBUTES.has(name) ||
    (['href', 'src', 'background'].includes(name) && isAllowedAddress(name, value));

const isDropped = (element) =>
    DROPPED_TAGS.has(tagOf(element)) || (tagOf(element) === 'div' && element.hasAttribute(ORPHAN_ATTR));

const isKept = (element) => namespaceOf(element) === document.documentElement.namespaceURI &&
    KEPT_TAGS.has(tagOf(element)) && !(tagOf(element) === 'mark' && element.matches(MARK_SELECTOR));

const copyOf = (element) => {
  const copy = inertDocument.createElement(tagOf(element));
  for (const attribute of [...element.attributes].filter(isAllowedAttribute)) {
    copy.setAttribute(attribute.name, attribute.value);
  }
  return copy;
};

// From each element around the node, below `top`, to its child on the way down to the node.
const pathTo = (node, top) => {
  const path = new Map();
  for (let child = node; child !== top; child = parentOf(child)) {
    path.set(parentOf(child), child);
  }
  return path;
};

// Cells and rows alone would be lost on the way to the reader: they stay in a table.
const topOf = ({commonAncestorContainer}) => {
  let top = commonAncestorContainer;
  while (isElement(top) && TABLE_PARTS.has(tagOf(top))) {
    top = parentOf(top);
  }
  return top;
};

const copySelected = (range) => {
  const {startContainer, startOffset, endContainer, endOffset} = range;
  const top = topOf(range);
  const [toStart, toEnd] = [startContainer, endContainer].map((node) => pathTo(node, top));
  const childAt = (parent, offset) => childNodesOf(parent)[offset] ?? null;
  const firstIn = (parent) =>
      parent === startContainer ? childAt(parent, startOffset) : toStart.get(parent) ?? firstChildOf(parent);
  // The child behind the last one.
  const endIn = (parent) => parent === endContainer ? childAt(parent, endOffset) :
      toEnd.has(parent)                             ? nextSiblingOf(toEnd.get(parent)) :
                                                      null;
  // Asked once for each parent, and only where it makes a difference: styles take long.
  const spaces = new Map();
  const spaceIn = (text) => {
    const parent = parentOf(text);
    if (!spaces.has(parent) && /[\t\n\r\f]|  /.test(text.data)) {
      spaces.set(parent, getComputedStyle(parent).whiteSpaceCollapse);
    }
    return spaces.get(parent) ?? 'collapse';
  };
  const copyNode = (node, target) => {
    if (isText(node)) {
      const copy = inertDocument.createTextNode(node.data.slice(
          node === startContainer ? startOffset : 0, node === endContainer ? endOffset : undefined));
      spaceOfCopy.set(copy, spaceIn(node));
      target.append(copy);
    } else if (isElement(node) && !isDropped(node)) {
      copyChildren(node, isKept(node) ? target.appendChild(copyOf(node)) : target);
    }
  };
  const copyChildren = (source, target) => {
    const end = endIn(source);
    for (let node = firstIn(source); node && node !== end; node = nextSiblingOf(node)) {
      copyNode(node, target);
    }
  };

  const content = inertDocument.createDocumentFragment();
  (isText(top) ? copyNode : copyChildren)(top, content);
  return content;
};

// A range's own text has nothing between blocks, and the rendered text needs a layout. Lines and words are
// what a page shows of them.
const fragmentToText = (content) => {
  const pieces = [];
  let isLineStart = true;
  let hasGap = false;  // a blank, if a word follows
  const write = (text) => {
    if (text !== '') {
      pieces.push(hasGap && !text.startsWith('\n') ? ' ' : '', text);
      [isLineStart, hasGap] = [text.endsWith('\n'), false];
    }
  };
  const writeLine = (line) => line.split(/[ \t\n\r\f]+/).forEach((word, i) => {
    hasGap ||= i > 0 && !isLineStart;
    write(word);
  });
  const writeText = (text, space) => {
    const isKept = (part) => space === 'preserve-breaks' ? part === '\n' : space !== 'collapse';
    text.split(/(\n)/).forEach((part) => (isKept(part) ? write : writeLine)(part));
  };
  const writeNode = (node) => {
    const {tagName} = node;
    const isBlock = TEXT_BLOCK_TAGS.has(tagName);
    if (isText(node)) {
      writeText(node.data, spaceOfCopy.get(node));
      return;
    }
    write(tagName === 'BR' || (isBlock && !isLineStart) ? '\n' : '');
    node.childNodes.forEach(writeNode);
    write(tagName === 'P' ? '\n\n' : isBlock ? '\n' : '');
    hasGap ||= ['TD', 'TH'].includes(tagName) && !isLineStart;
  };
  writeNode(content);
  return pieces.join('').replace(/\n{3,}/g, '\n\n').replace(/^\n+|\n+$/g, '');
};

const captureSelection = () => {
  // Clicking a reply button may empty the selection; the last one stays available.
  const selection = document.getSelection();
  if (!selection || selection.isCollapsed || selection.rangeCount === 0) {
    return;
  }
  const range = selection.getRangeAt(0);
  const ancestor = range.commonAncestorContainer;
  const container = (isElement(ancestor) ? ancestor : ancestor.parentElement)?.closest(CONTAINER_SELECTOR);
  const card = container?.closest(CARD_SELECTOR);
  if (!card) {
    log(container ? `selection in a message container in [${location.href}] but no ancestor .v-MessageCard` :
                    `selection made in [${location.href}] but not inside a recognized message container`);
    return;
  }
  const content = copySelected(range);
  const text = fragmentToText(content);
  if (text !== '') {
    lastSelection = {content, text, card, capturedAt: Date.now()};
    log(`captured selection in [${location.href}] (${text.length} chars): ${text.slice(0, 60)}`);
  }
};

const onSelectionChange = () => {
  clearTimeout(selectionDebounce);
  selectionDebounce = setTimeout(captureSelection, SELECTION_DEBOUNCE_MS);
};

// --- A reply, by button or by key: only watched, the application's own handlers open the editor. ---

const armPendingSwapIfMatching = (card, source) => {
  const obstacle = !lastSelection ? 'no captured selection' :
      isStale(lastSelection)      ? 'captured selection too stale' :
      card !== lastSelection.card ? 'but on a different message card than the selection' :
                                    '';
  if (obstacle) {
    log(`${source}, ${obstacle}`);
    return;
  }
  const {content, text} = lastSelection;
  const otherEditors = new Set([...document.querySelectorAll(EDITOR_SELECTOR)].filter(
      (editor) => /\S/.test(editor.value ?? editor.textContent)));
  pendingSwap = {content, text, capturedAt: Date.now(), otherEditors, quote: null};
  lastSelection = null;
  richSwapArmed = false;
  log(`armed pending swap (${source})`);
};

const onClick = ({target}) => {
  if (target.closest?.(CARD_SELECTOR)) {
    log(`click in a message card on ${target.tagName} with class "${target.getAttribute('class') ?? ''}"`);
  }
  const button = target.closest?.(REPLY_SELECTOR);
  if (button) {
    armPendingSwapIfMatching(button.closest(CARD_SELECTOR), 'reply clicked');
  }
};

const onKeyDown = (event) => {
  const key = event.key?.toLowerCase();
  if (key !== 'r' && key !== 'a') {
    return;
  }
  const {target} = event;
  const held = ['metaKey', 'ctrlKey', 'altKey', 'shiftKey'].map((name) => event[name]);
  log(`keydown ${key} on ${target.tagName} (meta, control, alt, shift: ${held.join(', ')})`);
  const otherMeaning = held.includes(true)                          ? 'a modifier is held' :
      target.closest?.('input, textarea, [contenteditable="true"]') ? 'typed into a field' :
                                                                      '';
  if (otherMeaning) {
    log(`keydown ${key}: ${otherMeaning}, not a reply`);
    return;
  }
  // A single message in view never has the class, so its absence contradicts nothing.
  const focused = document.querySelector(`${CARD_SELECTOR}.${FOCUSED_CLASS}`);
  const source = `reply shortcut (${key})`;
  if (!focused) {
    log(`${source}: no .v-MessageCard.is-focused on the page, falling back to the selection card`);
  }
  armPendingSwapIfMatching(focused ?? lastSelection?.card, `${source} pressed`);
};

// --- Whose quote it is. One is replaced that the application put into an editor for this reply; one of
// another letter, or that came with what the user wrote or pasted, is the user's. ---

const replyEditors = (swap, selector) => [...document.querySelectorAll(selector)].filter(
    (editor) => !swap.otherEditors.has(editor));

// The first of the reply's editors, better one with a quote.
const richEditor = (swap) => {
  const editors = replyEditors(swap, RICH_EDITOR_SELECTOR);
  return editors.find((editor) => editor.querySelector('blockquote')) ?? editors[0];
};

const onEdit = ({target}) => {
  if (isSendingInput || !target.closest?.(EDITOR_SELECTOR)) {
    return;
  }
  ++edits;
  if (pendingSwap && !pendingSwap.quote) {
    log('pending swap ended, the user writes and there is no quote yet');
    pendingSwap = null;
  }
};

// --- The rich-text editor. ---

// What follows the quote was there before the swap: if the application has drawn the editor anew without
// it, it is put back.
const verifyTail = (editable, blockquote, tail, editsBefore) => {
  const isLost = blockquote.isConnected && !editable.contains(blockquote.nextSibling);
  const outcome = !blockquote.isConnected ? 'blockquote no longer in the document, skipping' :
      !isLost                             ? 'content after the quote is still present' :
      edits !== editsBefore ? 'content after the quote went missing, while the user was writing' :
                              'content after the quote went missing, restoring it';
  log(`rich-text tail check: ${outcome}`);
  if (isLost && edits === editsBefore) {
    blockquote.after(...tail);
    sendInput(editable);
  }
};

// `swap` is the pending swap of the time when this was scheduled; another may be pending by now.
const performRichSwap = (swap) => {
  const editable = richEditor(swap);
  const blockquote = editable?.querySelector('blockquote');
  if (!blockquote) {
    log('rich-text swap: blockquote gone by the time the delay elapsed, will retry');
    [richSwapArmed, swap.quote] = [false, null];
    return;
  }
  if (edits !== swap.quote.edits && blockquote.textContent !== swap.quote.text) {
    log('rich-text swap: the user has changed the quote');
    endSwap(swap);
    return;
  }
  const siblings = blockquote.parentNode === editable ? [...editable.childNodes] : [];
  const tail = siblings.slice(siblings.indexOf(blockquote) + 1).map((node) => node.cloneNode(true));
  blockquote.replaceChildren(swap.content);
  sendInput(editable);
  const protection = tail.length > 0 ? `captured ${tail.length} trailing node(s) to protect` :
                                       'nothing trailing the quote to protect';
  log(`rich-text swap applied (${protection})`);
  endSwap(swap);
  if (tail.length > 0) {
    const editsNow = edits;
    setTimeout(
        () => attempt('tail restore', swap, () => verifyTail(editable, blockquote, tail, editsNow)),
        RICH_VERIFY_DELAY_MS);
  }
};

// Only schedules: the pending swap is cleared when it has been carried out.
const trySwapRichText = () => {
  const quote = richEditor(pendingSwap)?.querySelector('blockquote');
  if (quote === null) {
    log('rich editor found, but no blockquote yet');
  }
  if (!quote || richSwapArmed) {
    return;
  }
  richSwapArmed = true;
  const swap = pendingSwap;
  swap.quote = {text: quote.textContent, edits};
  log(`rich editor + blockquote found, scheduling swap in ${RICH_SWAP_DELAY_MS}ms`);
  setTimeout(() => attempt('rich-text swap', swap, () => performRichSwap(swap)), RICH_SWAP_DELAY_MS);
};

// --- The plain-text editor. ---

// The paragraph as lines of at most `width` characters; a longer word stands alone, unbroken.
const wrapParagraph = (paragraph, width) => {
  const [line, ...words] = paragraph.split(' ');
  const lines = [line];
  for (const word of words) {
    const longer = `${lines.at(-1)} ${word}`;
    const fits = longer.length <= width;
    lines.splice(fits ? -1 : lines.length, 1, fits ? longer : word);
  }
  return lines.length > 1 && lines.at(-1) === '' ? lines.slice(0, -1) : lines;
};

const wrapQuoted = (text, width) =>
    text.split('\n')
        .flatMap((paragraph) => wrapParagraph(paragraph, width - QUOTE_MARKER.length))
        .map((line) => line === '' ? '>' : QUOTE_MARKER + line)
        .join('\n');

const isQuoted = (line) => line.startsWith('>');

// An empty line within a quote is a paragraph's end.
const isOfQuote = (line, i, lines) => isQuoted(line) || (line === '' && isQuoted(lines[i + 1] ?? ''));

const {set: setNativeValue} = Object.getOwnPropertyDescriptor(HTMLTextAreaElement.prototype, 'value');

const swapIn = (textarea, text) => {
  const lines = textarea.value.split('\n');
  const quoteStart = lines.findIndex(isQuoted);
  if (quoteStart < 0) {
    return false;
  }
  const behind = lines.findIndex((line, i) => i > quoteStart && !isOfQuote(line, i, lines));
  const quoteEnd = behind < 0 ? lines.length : behind;
  const [head, tail] = [lines.slice(0, quoteStart), lines.slice(quoteEnd)].map((part) => part.join('\n'));

  // The native setter, so that the application's framework sees a change.
  setNativeValue.call(textarea, `${head && `${head}\n`}${wrapQuoted(text, QUOTE_WIDTH)}\n${tail}`);
  sendInput(textarea);
  // Back to where the application puts the caret. Never by focus(): on that, the application copies the
  // whole quote back from its own state.
  if (textarea === document.activeElement) {
    textarea.setSelectionRange(0, 0);
  }
  log(`plain-text swap applied (${
      tail === '' ? 'nothing trailing the quote to preserve' :
                    `preserved ${lines.length - quoteEnd} trailing line(s) after the quote`})`);
  return true;
};

const trySwapPlainText = () => {
  const textareas = replyEditors(pendingSwap, PLAIN_EDITOR_SELECTOR);
  const isSwapped = textareas.some((textarea) => swapIn(textarea, pendingSwap.text));
  if (!isSwapped && textareas.length > 0) {
    log(`found ${textareas.length} textarea(s), none matched the quote marker yet`);
  }
  return isSwapped;
};

// --- Watching. ---

const listen = () => {
  document.addEventListener('selectionchange', onSelectionChange);
  document.addEventListener('click', onClick, true);
  // The earliest place that sees the key: the application's shortcuts never click the button.
  window.addEventListener('keydown', onKeyDown, true);
  ['input', 'paste', 'drop'].forEach((type) => document.addEventListener(type, onEdit, true));
};

let root = document.documentElement;
listen();

new MutationObserver(() => {
  if (document.documentElement !== root) {
    root = document.documentElement;
    listen();  // a document that is written anew has lost its listeners, and not its observers
  }
  if (!pendingSwap) {
    return;
  }
  const swap = pendingSwap;
  attempt('swap', swap, () => {
    trySwapRichText();
    if (trySwapPlainText()) {
      endSwap(swap);
    } else if (isStale(swap)) {
      log('pending swap expired without finding a matching compose editor');
      endSwap(swap);
    }
  });
}).observe(document, {childList: true, subtree: true});

log(`script installed on ${location.href}`);
