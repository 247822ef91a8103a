// Lets a reply quote only what was selected in the message. It watches selections and replies without a hand
// in either, and when the editor has opened with the whole quote, puts the selection in its place.
//
//   selection -> lastSelection -> (reply on the same message) -> pendingSwap -> (editor with a quote) ->
//   swapped
//
// Each way of giving up is logged: a swap that silently doesn't happen leaves nothing else to go on.
(() => {
  'use strict';

  if (window._ondrelReplySelectionInstalled) {
    return;
  }
  window._ondrelReplySelectionInstalled = true;

  const CONTAINER_SELECTOR = '.v-Message-body, .v-MessageView, .v-MessageView-body';
  const REPLY_SELECTOR = '.s-reply, .s-small-reply, .s-reply-all';
  const CARD_SELECTOR = '.v-MessageCard';
  const RICH_EDITOR_SELECTOR = '[contenteditable="true"].v-RichText-input';
  const PLAIN_EDITOR_SELECTOR = 'textarea.v-TextInput-input';
  const FRESHNESS_MS = 30000;
  // The application goes on working on a new quote, on the signature below it above all. Raise this if a
  // signature still goes missing.
  const RICH_SWAP_DELAY_MS = 250;
  const RICH_VERIFY_DELAY_MS = 300;
  const SELECTION_DEBOUNCE_MS = 150;
  const QUOTE_WIDTH = 70;  // of a whole line, with its "> "
  const QUOTE_MARKER = '> ';
  const TEXT_BLOCK_TAGS = new Set(
      ['DIV', 'P', 'LI', 'BLOCKQUOTE', 'TR', 'TABLE', 'UL', 'OL', 'H1', 'H2', 'H3', 'H4', 'H5', 'H6', 'PRE']);
  const LOG_PREFIX = '[Ondrel] reply-with-selection';
  const TABLE_PARTS = new Set(['table', 'caption', 'colgroup', 'thead', 'tbody', 'tfoot', 'tr']);
  const HIGHLIGHT_MARK = '[data-ondrel-hid]';  // of the user's alone, as is what the banner says
  const HIGHLIGHT_BANNER = '[data-ondrel-orphan-banner]';
  // What a quote is made of. Of other elements only what they hold is kept, and of some not even that.
  const KEPT_TAGS = new Set(
      ('a abbr acronym address article aside b bdi bdo big blockquote br center cite code col dd del dfn dir ' +
       'div dl dt em figcaption figure font footer h1 h2 h3 h4 h5 h6 header hr i img ins kbd li main mark nav ' +
       'nobr ol p pre q rp rt ruby s samp section small span strike strong sub sup td th time tt u ul var wbr')
          .split(' ')
          .concat(...TABLE_PARTS));
  const DROPPED_TAGS = new Set(
      ('script style template noscript title head iframe frame frameset noframes noembed select datalist ' +
       'annotation annotation-xml desc metadata defs')
          .split(' '));
  const KEPT_ATTRIBUTES = new Set(
      ('style dir lang title alt hidden align valign width height size border color face bgcolor bordercolor ' +
       'cellpadding cellspacing colspan rowspan span nowrap noshade clear compact start reversed type value ' +
       'scope headers abbr summary rules frame hspace vspace datetime')
          .split(' '));
  const LINK_SCHEMES = new Set(['http:', 'https:', 'mailto:', 'tel:', 'sms:', 'ftp:', 'webcal:']);
  const IMAGE_SCHEMES = new Set(['http:', 'https:', 'blob:', 'cid:']);

  let lastSelection = null;   // {content, text, card, capturedAt}
  let pendingSwap = null;     // {content, text, capturedAt}
  let richSwapArmed = false;  // a rich-text swap is scheduled
  let selectionDebounce = 0;

  const log = (text) => console.log(`${LOG_PREFIX}: ${text}`);
  const logFailure = (what, error) => console.log(`${LOG_PREFIX} ${what} failed: ${error}`);

  const isStale = ({capturedAt}) => Date.now() - capturedAt > FRESHNESS_MS;
  const sendInput = (editor) => editor.dispatchEvent(new Event('input', {bubbles: true}));

  // --- What is selected: copied at once, since others change the text nodes under a live range. ---
  //
  // The copy is made anew of what a quote needs, in a document in which nothing loads or runs, and is never
  // written as markup and read again: a parser can take text of the message for elements then. What the
  // application does that with later, its drafts, holds nothing of that kind: each tag in what is written is
  // one of an element that was let in, since nothing is left that makes a parser read "<" otherwise (styles,
  // titles, text fields, comments, elements of other languages).

  const inertDocument = document.implementation.createHTMLDocument('');

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
      DROPPED_TAGS.has(tagOf(element)) || (tagOf(element) === 'div' && element.matches(HIGHLIGHT_BANNER));

  const isKept = (element) => namespaceOf(element) === document.documentElement.namespaceURI &&
      KEPT_TAGS.has(tagOf(element)) && !(tagOf(element) === 'mark' && element.matches(HIGHLIGHT_MARK));

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
    const firstIn = (parent) => parent === startContainer ? childAt(parent, startOffset) :
                                                            toStart.get(parent) ?? firstChildOf(parent);
    // The child behind the last one.
    const endIn = (parent) => parent === endContainer ? childAt(parent, endOffset) :
        toEnd.has(parent)                             ? nextSiblingOf(toEnd.get(parent)) :
                                                        null;
    const copyNode = (node, target) => {
      if (isText(node)) {
        target.append(node.data.slice(
            node === startContainer ? startOffset : 0, node === endContainer ? endOffset : undefined));
      } else if (isElement(node) && !isDropped(node)) {
        const copy = isKept(node) ? copyOf(node) : null;
        if (copy) {
          target.append(copy);
        }
        copyChildren(node, copy ?? target);
      }
    };
    const copyChildren = (source, target) => {
      const end = endIn(source);
      for (let node = firstIn(source); node && node !== end; node = nextSiblingOf(node)) {
        copyNode(node, target);
      }
    };

    const content = inertDocument.createDocumentFragment();
    if (isText(top)) {
      copyNode(top, content);
    } else {
      copyChildren(top, content);
    }
    return content;
  };

  const textOfNode = (node) => {
    if (node.nodeType === Node.TEXT_NODE) {
      return node.data;
    }
    if (node.tagName === 'BR') {
      return '\n';
    }
    const text = [...node.childNodes].map(textOfNode).join('');
    return TEXT_BLOCK_TAGS.has(node.tagName) ? `${text}\n` : text;
  };

  // A range's own text has nothing between blocks, and the rendered text needs a layout.
  const fragmentToText = (content) =>
      textOfNode(content).replace(/\n{3,}/g, '\n\n').replace(/^\n+|\n+$/g, '');

  const captureSelection = () => {
    // Clicking a reply button may empty the selection; the last one stays available.
    const selection = document.getSelection();
    if (!selection || selection.isCollapsed || selection.rangeCount === 0) {
      return;
    }
    const range = selection.getRangeAt(0);
    const ancestor = range.commonAncestorContainer;
    const element = ancestor.nodeType === Node.ELEMENT_NODE ? ancestor : ancestor.parentElement;
    const container = element?.closest(CONTAINER_SELECTOR);
    if (!container) {
      log(`selection made in [${location.href}] but not inside a recognized message container`);
      return;
    }
    const card = container.closest(CARD_SELECTOR);
    if (!card) {
      log(`selection in a message container in [${location.href}] but no ancestor .v-MessageCard`);
      return;
    }
    const content = copySelected(range);
    const text = fragmentToText(content);
    if (text === '') {
      return;
    }
    lastSelection = {content, text, card, capturedAt: Date.now()};
    log(`captured selection in [${location.href}] (${text.length} chars): ${text.slice(0, 60)}`);
  };

  document.addEventListener('selectionchange', () => {
    clearTimeout(selectionDebounce);
    selectionDebounce = setTimeout(captureSelection, SELECTION_DEBOUNCE_MS);
  });

  // --- A reply, by button or by key: only watched, the application's own handlers open the editor. ---

  const armPendingSwapIfMatching = (card, source) => {
    if (!lastSelection) {
      log(`${source}, no captured selection`);
      return;
    }
    if (isStale(lastSelection)) {
      log(`${source}, captured selection too stale`);
      return;
    }
    if (!card || card !== lastSelection.card) {
      log(`${source}, but on a different message card than the selection`);
      return;
    }
    pendingSwap = {content: lastSelection.content, text: lastSelection.text, capturedAt: Date.now()};
    lastSelection = null;
    richSwapArmed = false;
    log(`armed pending swap (${source})`);
  };

  document.addEventListener('click', ({target}) => {
    if (target.closest?.(CARD_SELECTOR)) {
      log(`click in a message card on ${target.tagName} with class "${target.getAttribute('class') ?? ''}"`);
    }
    const button = target.closest?.(REPLY_SELECTOR);
    if (button) {
      armPendingSwapIfMatching(button.closest(CARD_SELECTOR), 'reply clicked');
    }
  }, true);

  // On the window, the earliest place that sees the key: the application's shortcuts never click the button.
  window.addEventListener('keydown', (event) => {
    const key = event.key?.toLowerCase();
    if (key !== 'r' && key !== 'a') {
      return;
    }
    const {target, metaKey, ctrlKey, altKey, shiftKey} = event;
    log(`keydown ${key} on ${target.tagName} (meta ${metaKey}, control ${ctrlKey}, alt ${altKey}, shift ${
        shiftKey})`);
    if (metaKey || ctrlKey || altKey || shiftKey) {
      log(`keydown ${key}: a modifier is held, not a reply`);
      return;
    }
    if (target.closest?.('input, textarea, [contenteditable="true"]')) {
      log(`keydown ${key}: typed into a field, not a reply`);
      return;
    }
    // A single message in view never has the class, so its absence contradicts nothing.
    const focused = document.querySelector(`${CARD_SELECTOR}.is-focused`);
    if (!focused) {
      log(`reply shortcut (${
          key}): no .v-MessageCard.is-focused on the page, falling back to the selection card`);
    }
    armPendingSwapIfMatching(focused ?? lastSelection?.card, `reply shortcut (${key}) pressed`);
  }, true);

  // --- The rich-text editor. ---

  // What follows the quote was there before the swap: if the application has drawn the editor anew without
  // it, it is put back.
  const verifyTail = (editable, blockquote, tail) => {
    try {
      if (!blockquote.isConnected) {
        log('rich-text tail check: blockquote no longer in the document, skipping');
        return;
      }
      if (blockquote.nextSibling && editable.contains(blockquote.nextSibling)) {
        log('rich-text tail check: content after the quote is still present');
        return;
      }
      log('rich-text tail check: content after the quote went missing, restoring it');
      blockquote.after(...tail);
      sendInput(editable);
    } catch (error) {
      logFailure('tail restore', error);
    }
  };

  const siblingsAfter = (node) => {
    const siblings = [];
    for (let next = node.nextSibling; next; next = next.nextSibling) {
      siblings.push(next);
    }
    return siblings;
  };

  // `swap` is the pending swap of the time when this was scheduled; another may be pending by now.
  const performRichSwap = (swap) => {
    try {
      const editable = document.querySelector(RICH_EDITOR_SELECTOR);
      const blockquote = editable?.querySelector('blockquote');
      if (!blockquote) {
        log('rich-text swap: blockquote gone by the time the delay elapsed, will retry');
        richSwapArmed = false;
        return;
      }
      const tail = siblingsAfter(blockquote)
                       .filter((node) => node.parentNode === editable)
                       .map((node) => node.cloneNode(true));
      blockquote.replaceChildren(swap.content);
      sendInput(editable);
      const protection = tail.length > 0 ? `captured ${tail.length} trailing node(s) to protect` :
                                           'nothing trailing the quote to protect';
      log(`rich-text swap applied (${protection})`);
      if (pendingSwap === swap) {
        pendingSwap = null;
      }
      if (tail.length > 0) {
        setTimeout(() => verifyTail(editable, blockquote, tail), RICH_VERIFY_DELAY_MS);
      }
    } catch (error) {
      logFailure('rich-text swap', error);
      richSwapArmed = false;
      if (pendingSwap === swap) {
        pendingSwap = null;
      }
    }
  };

  // Only schedules: the pending swap is cleared when it has been carried out.
  const trySwapRichText = () => {
    const editable = document.querySelector(RICH_EDITOR_SELECTOR);
    if (!editable) {
      return;
    }
    if (!editable.querySelector('blockquote')) {
      log('rich editor found, but no blockquote yet');
      return;
    }
    if (richSwapArmed) {
      return;
    }
    richSwapArmed = true;
    const swap = pendingSwap;
    log(`rich editor + blockquote found, scheduling swap in ${RICH_SWAP_DELAY_MS}ms`);
    setTimeout(() => performRichSwap(swap), RICH_SWAP_DELAY_MS);
  };

  // --- The plain-text editor. ---

  // The paragraph as lines of at most `width` characters; a longer word stands alone, unbroken.
  const wrapParagraph = (paragraph, width) => {
    const lines = [];
    const [first, ...words] = paragraph.split(' ');
    let line = first;
    for (const word of words) {
      if (line.length + 1 + word.length <= width) {
        line += ` ${word}`;
      } else {
        lines.push(line);
        line = word;
      }
    }
    return line === '' && lines.length > 0 ? lines : [...lines, line];
  };

  const wrapQuoted = (text, width) => {
    const innerWidth = width - QUOTE_MARKER.length;
    return text.split('\n')
        .flatMap((paragraph) => wrapParagraph(paragraph, innerWidth))
        .map((line) => line === '' ? '>' : QUOTE_MARKER + line)
        .join('\n');
  };

  const isQuoted = (line) => line.startsWith('>');

  // The first line behind the quote. An empty line within it is a paragraph's end.
  const endOfQuote = (lines, quoteStart) => {
    for (let i = quoteStart; i < lines.length; ++i) {
      const isBreak = lines[i] === '' && i + 1 < lines.length && isQuoted(lines[i + 1]);
      if (!isQuoted(lines[i]) && !isBreak) {
        return i;
      }
    }
    return lines.length;
  };

  const {set: setNativeValue} = Object.getOwnPropertyDescriptor(HTMLTextAreaElement.prototype, 'value');

  const swapIn = (textarea, text) => {
    const lines = textarea.value.split('\n');
    const quoteStart = lines.findIndex(isQuoted);
    if (quoteStart < 0) {
      return false;
    }
    const quoteEnd = endOfQuote(lines, quoteStart);
    const before = lines.slice(0, quoteStart).join('\n');
    const head = before === '' ? '' : `${before}\n`;
    const tail = lines.slice(quoteEnd).join('\n');

    // The native setter, so that the application's framework sees a change.
    setNativeValue.call(textarea, `${head}${wrapQuoted(text, QUOTE_WIDTH)}\n${tail}`);
    sendInput(textarea);
    // Back to where the application puts the caret. Never by focus(): on that, the application copies the
    // whole quote back from its own state.
    if (textarea === document.activeElement) {
      textarea.setSelectionRange(0, 0);
    }
    const preservation = tail === '' ?
        'nothing trailing the quote to preserve' :
        `preserved ${lines.length - quoteEnd} trailing line(s) after the quote`;
    log(`plain-text swap applied (${preservation})`);
    return true;
  };

  const trySwapPlainText = () => {
    const textareas = [...document.querySelectorAll(PLAIN_EDITOR_SELECTOR)];
    if (textareas.some((textarea) => swapIn(textarea, pendingSwap.text))) {
      return true;
    }
    if (textareas.length > 0) {
      log(`found ${textareas.length} textarea(s), none matched the quote marker yet`);
    }
    return false;
  };

  new MutationObserver(() => {
    if (!pendingSwap) {
      return;
    }
    try {
      trySwapRichText();
      if (trySwapPlainText()) {
        pendingSwap = null;
      } else if (isStale(pendingSwap)) {
        log('pending swap expired without finding a matching compose editor');
        pendingSwap = null;
      }
    } catch (error) {
      logFailure('swap', error);
      pendingSwap = null;
    }
  }).observe(document.documentElement, {childList: true, subtree: true});

  log(`script installed on ${location.href}`);
})();
