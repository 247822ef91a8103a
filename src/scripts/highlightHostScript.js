// Text highlights in messages. It offers a button over a selection, paints the program's saved highlights
// whenever the application has drawn a message, and tells of those whose text can't be found.
//
// The application owns the document and draws it anew as it likes. So a highlight is anchored to a message's
// plain text, never to nodes, and a message is known by its place in the list of message bodies alone: the
// program knows which message stands there.
//
//   change in the document -> tick (300 ms) -> report to the program -> __ondrelApplyHighlights -> reconcile
(() => {
  'use strict';

  if (window._ondrelHighlightInstalled) {
    return;
  }
  window._ondrelHighlightInstalled = true;

  const CONTAINER_SELECTOR = '.v-Message-body, .v-MessageView, .v-MessageView-body';
  const CARD_SELECTOR = '.v-MessageCard';
  const FOCUSED_CLASS = 'is-focused';
  const HID_ATTR = 'data-ondrel-hid';
  const MARK_SELECTOR = `mark[${HID_ATTR}]`;
  const ORPHAN_ATTR = 'data-ondrel-orphan-banner';
  const ORPHAN_IDS_ATTR = 'data-ondrel-orphan-ids';
  const CONTEXT_WIDTH = 32;  // UTF-16 code units on each side
  const LONG_TEXT = 256;     // from here on a search mustn't be quadratic
  const TICK_MS = 300;
  const SELECTION_DEBOUNCE_MS = 150;
  const MARK_STYLE = {backgroundColor: '#ffe066', borderRadius: '2px', cursor: 'pointer'};
  const BANNER_STYLE = {
    background: '#fff3cd',
    color: '#7a5b00',
    padding: '4px 8px',
    font: '12px -apple-system,sans-serif',
    cursor: 'pointer',
    borderRadius: '4px',
    marginBottom: '6px',
  };
  const BUTTON_STYLE = {
    position: 'fixed',
    zIndex: '2147483647',
    background: '#222',
    color: '#fff',
    font: '12px -apple-system,sans-serif',
    padding: '4px 10px',
    borderRadius: '6px',
    cursor: 'pointer',
    boxShadow: '0 2px 6px rgba(0,0,0,.3)',
    userSelect: 'none',
    webkitUserSelect: 'none',
  };

  let containers = [];                 // in document order, as of the last tick
  let currentAnchorsByContainer = [];  // anchors {id, exact, occurrenceIndex} by index in `containers`
  let tickScheduled = false;
  let hostReadyPosted = false;
  let lastReported = '';
  let btn = null;
  let selectionDebounce = null;
  const searches = new WeakMap();   // container -> TextSearch of its text
  const orphanIds = new WeakMap();  // banner -> ids

  const log = (text) => console.log(`[Ondrel] highlight${text}`);

  // False when the program can't have it. Without the program there is nobody to tell, and the page is none
  // the worse for it.
  const post = (message) => {
    try {
      return window.webkit.messageHandlers.ondrel.postMessage(message) !== false;
    } catch {
      return false;
    }
  };

  const styled = (tag, style) => {
    const element = document.createElement(tag);
    Object.assign(element.style, style);
    return element;
  };

  const swallow = (event) => {
    event.preventDefault();
    event.stopPropagation();
  };

  // --- Containers. ---

  const findContainers = () => [...document.querySelectorAll(CONTAINER_SELECTOR)];

  const containerOf = (node) => containers.find((container) => container.contains(node));

  const computeFocusedIndex = () => containers.findIndex(
      (container) => container.closest(CARD_SELECTOR)?.classList.contains(FOCUSED_CLASS));

  // --- Text: offsets count UTF-16 code units in a container's textContent. ---

  const plainTextOffset = (root, node, offset) => {
    const range = document.createRange();
    range.setStart(root, 0);
    range.setEnd(node, offset);
    return range.toString().length;
  };

  // The places of `exact` in `text`, overlapping ones too. Neither is ours, and indexOf() takes the product
  // of both lengths where a text repeats itself: a long one is looked for in time that grows with their sum
  // (Knuth, Morris, Pratt).
  function* occurrencesOf(text, exact) {
    if (exact.length <= LONG_TEXT) {
      for (let start = text.indexOf(exact); start >= 0; start = text.indexOf(exact, start + 1)) {
        yield start;
      }
      return;
    }
    const borders = new Int32Array(exact.length + 1);  // of a beginning of that length: its longest border
    const extend = (matched, unit) => {
      while (matched > 0 && exact.charCodeAt(matched) !== unit) {
        matched = borders[matched];
      }
      return exact.charCodeAt(matched) === unit ? matched + 1 : 0;
    };
    for (let i = 1; i < exact.length; ++i) {
      borders[i + 1] = extend(borders[i], exact.charCodeAt(i));
    }
    let matched = 0;
    for (let i = 0; i < text.length; ++i) {
      matched = extend(matched, text.charCodeAt(i));
      if (matched === exact.length) {
        yield i + 1 - matched;
        matched = borders[matched];
      }
    }
  }

  // One text in which many highlights are looked up. What was found or not found stays known.
  class TextSearch {
    #scans = new Map();  // exact -> {starts, rest}

    constructor(text) {
      this.text = text;
    }

    // The offset of that occurrence, from 0; null for none, and for an empty text: nobody sees its mark.
    startOf(exact, occurrenceIndex) {
      if (exact === '' || occurrenceIndex < 0) {
        return null;
      }
      let scan = this.#scans.get(exact);
      if (!scan) {
        scan = {starts: [], rest: occurrencesOf(this.text, exact)};
        this.#scans.set(exact, scan);
      }
      while (scan.starts.length <= occurrenceIndex) {
        const {value, done} = scan.rest.next();
        if (done) {
          return null;
        }
        scan.starts.push(value);
      }
      return scan.starts[occurrenceIndex];
    }
  }

  const searchOf = (containerEl) => {
    const text = containerEl.textContent;
    let search = searches.get(containerEl);
    if (search?.text !== text) {
      search = new TextSearch(text);
      searches.set(containerEl, search);
    }
    return search;
  };

  // The text nodes of a container by their offsets. Wraps may split them meanwhile: the first piece of each
  // stays in its place, and what is behind it is found from there.
  class TextNodes {
    #walker;
    #nodes = [];
    #ends = [];

    constructor(root) {
      this.#walker = document.createTreeWalker(root, NodeFilter.SHOW_TEXT);
      let consumed = 0;
      for (let node = this.#walker.nextNode(); node; node = this.#walker.nextNode()) {
        consumed += node.length;
        this.#nodes.push(node);
        this.#ends.push(consumed);
      }
    }

    // An offset between two nodes lies at the end of the earlier one. Null behind the last node.
    pointAtOffset(targetOffset) {
      const i = this.#firstEndingAt(targetOffset);
      if (i === this.#nodes.length) {
        return null;
      }
      let node = this.#walker.currentNode = this.#nodes[i];
      let offset = targetOffset - (i > 0 ? this.#ends[i - 1] : 0);
      while (node && node.length < offset) {
        offset -= node.length;
        node = this.#walker.nextNode();
      }
      return node && {node, offset};
    }

    // The index of the first node that ends at the offset or behind it.
    #firstEndingAt(offset) {
      let low = 0;
      let high = this.#ends.length;
      while (low < high) {
        const middle = (low + high) >>> 1;
        if (this.#ends[middle] < offset) {
          low = middle + 1;
        } else {
          high = middle;
        }
      }
      return low;
    }
  }

  // --- Anchors. ---

  const isText = (node) => node.nodeType === Node.TEXT_NODE;

  const randomId = () => {
    if (crypto.randomUUID) {
      return crypto.randomUUID();
    }
    // Pages without transport security lack it.
    const bytes = crypto.getRandomValues(new Uint8Array(16));
    bytes[6] = bytes[6] & 0x0f | 0x40;
    bytes[8] = bytes[8] & 0x3f | 0x80;
    return Array.from(bytes, (byte) => byte.toString(16).padStart(2, '0'))
        .join('')
        .replace(/^(.{8})(.{4})(.{4})(.{4})/, '$1-$2-$3-$4-');
  };

  // Without the half of a character that the cut has left at an edge: the program takes Unicode only.
  const wholeCharacters = (text) => text.replace(/^[\udc00-\udfff]|[\ud800-\udbff]$/g, '').toWellFormed();

  const computeAnchor = (containerEl, range) => {
    const full = containerEl.textContent;
    const startOffset = plainTextOffset(containerEl, range.startContainer, range.startOffset);
    const endOffset = plainTextOffset(containerEl, range.endContainer, range.endOffset);
    const exact = full.slice(startOffset, endOffset);
    if (exact === '') {
      return null;
    }
    let occurrenceIndex = 0;
    for (const start of occurrencesOf(full, exact)) {
      if (start >= startOffset) {
        break;
      }
      ++occurrenceIndex;
    }
    return {
      id: randomId(),
      exact,
      prefix: wholeCharacters(full.slice(Math.max(0, startOffset - CONTEXT_WIDTH), startOffset)),
      suffix: wholeCharacters(full.slice(endOffset, endOffset + CONTEXT_WIDTH)),
      occurrenceIndex,
    };
  };

  // --- Marks: around text nodes only, so that the application's elements and listeners stay. ---

  const markTemplate = styled('mark', MARK_STYLE);

  const newMark = (id) => {
    const mark = markTemplate.cloneNode();
    mark.setAttribute(HID_ATTR, id);
    return mark;
  };

  const marksIn = (containerEl) => [...containerEl.querySelectorAll(MARK_SELECTOR)];

  // The range's part of each text node in it.
  const piecesOf = (containerEl, range) => {
    const {startContainer, startOffset, endContainer, endOffset} = range;
    const walker = document.createTreeWalker(containerEl, NodeFilter.SHOW_TEXT);
    // From the start on, since a walk through all of a long message for each highlight takes too long.
    walker.currentNode = containerEl.contains(startContainer) ? startContainer : containerEl;
    let node = isText(walker.currentNode) ? walker.currentNode : walker.nextNode();
    const pieces = [];
    // Comparing places is slow among many siblings; between two text nodes the walk alone tells.
    const isBehind = (candidate) => !isText(endContainer) && range.comparePoint(candidate, 0) > 0;
    const isInside = (candidate) => isText(startContainer) || range.intersectsNode(candidate);
    for (; node && !isBehind(node); node = walker.nextNode()) {
      const start = node === startContainer ? startOffset : 0;
      const end = node === endContainer ? endOffset : node.length;
      if (start < end && isInside(node)) {
        pieces.push({node, start, end});
      }
      if (node === endContainer) {
        break;
      }
    }
    return pieces;
  };

  // Made once: at each change the document brings all ranges up to date that haven't been collected yet.
  const paintRange = document.createRange();
  const pieceRange = document.createRange();

  // By way of the document's start: the engine compares a range's new place with its old one, which among
  // many siblings takes long.
  const place = (range, start, end) => {
    range.setStart(document, 0);
    range.collapse(true);
    range.setStart(start.node, start.offset);
    range.setEnd(end.node, end.offset);
  };

  const wrapRange = (containerEl, range, id) => {
    try {
      if (range.startContainer === range.endContainer && isText(range.startContainer)) {
        range.surroundContents(newMark(id));
        return true;
      }
      for (const {node, start, end} of piecesOf(containerEl, range)) {
        place(pieceRange, {node, offset: start}, {node, offset: end});
        pieceRange.surroundContents(newMark(id));
      }
      return true;
    } catch (error) {
      log(` wrapRange failed: ${error}`);
      return false;
    }
  };

  const unwrapMark = (mark) => {
    const {parentNode} = mark;
    mark.replaceWith(...mark.childNodes);
    parentNode.normalize();
  };

  // Compared and never put into a selector: ids come from files, too.
  const removeMarksById = (containerEl, id) =>
      marksIn(containerEl).filter((mark) => mark.getAttribute(HID_ATTR) === id).forEach(unwrapMark);

  // Takes highlights out of what the next reconcile paints.
  const forget = (index, ids) => {
    if (currentAnchorsByContainer[index]) {
      currentAnchorsByContainer[index] =
          currentAnchorsByContainer[index].filter((anchor) => !ids.includes(anchor.id));
    }
  };

  // Paints the highlights of one container in one reconcile.
  class Painter {
    #containerEl;
    #markIds;
    #search = null;
    #nodes = null;

    constructor(containerEl) {
      this.#containerEl = containerEl;
      this.#markIds = new Set(marksIn(containerEl).map((mark) => mark.getAttribute(HID_ATTR)));
    }

    // False for an orphan. A failed wrap makes none.
    applyAnchor({id, exact, occurrenceIndex}) {
      if (this.#markIds.has(id)) {
        return true;
      }
      const startOffset = this.#startOf(exact, occurrenceIndex);
      if (startOffset === null || !this.#locateRange(startOffset, startOffset + exact.length)) {
        log(`: text not found for ${id}`);
        return false;
      }
      if (wrapRange(this.#containerEl, paintRange, id)) {
        this.#markIds.add(id);
      } else {
        this.#nodes = null;  // whatever is there now
      }
      return true;
    }

    #startOf(exact, occurrenceIndex) {
      this.#search ??= searchOf(this.#containerEl);
      return this.#search.startOf(exact, occurrenceIndex);
    }

    #locateRange(startOffset, endOffset) {
      this.#nodes ??= new TextNodes(this.#containerEl);
      const start = this.#nodes.pointAtOffset(startOffset);
      const end = this.#nodes.pointAtOffset(endOffset);
      if (!start || !end) {
        return false;
      }
      place(paintRange, start, end);
      return true;
    }
  }

  // --- The banner over a message some of whose highlights can't be found. ---

  // Not that of a message inside.
  const bannerOf = (containerEl) => [...containerEl.querySelectorAll(`[${ORPHAN_ATTR}]`)].find(
      (banner) => banner.closest(CONTAINER_SELECTOR) === containerEl);

  const clearOrphans = (containerEl, banner) => {
    const ids = orphanIds.get(banner);
    const index = containers.indexOf(containerEl);
    banner.remove();
    // Or the reconcile that follows the removal brings the banner back.
    forget(index, ids);
    post({
      type: 'ondrelHighlightClearOrphaned',
      containerIndex: String(index),
      idsJSON: JSON.stringify(ids),
    });
  };

  const newBanner = (containerEl) => {
    const banner = styled('div', BANNER_STYLE);
    banner.setAttribute(ORPHAN_ATTR, '1');
    banner.addEventListener('click', (event) => {
      swallow(event);
      clearOrphans(containerEl, banner);
    });
    containerEl.prepend(banner);
    return banner;
  };

  const updateOrphanBanner = (containerEl, orphanedIds) => {
    const existing = bannerOf(containerEl);
    if (orphanedIds.length === 0) {
      existing?.remove();
      return;
    }
    const banner = existing ?? newBanner(containerEl);
    // The attribute is for the eye: an id may hold a comma, and a click must not clear another highlight.
    orphanIds.set(banner, orphanedIds);
    banner.setAttribute(ORPHAN_IDS_ATTR, orphanedIds.join(','));
    banner.textContent = `${
        orphanedIds
            .length} highlight(s) hidden — open the other emails in this thread to see them, or click to clear`;
  };

  // --- Reconcile and tick. ---

  const reconcile = (containerEl, anchors) => {
    const painter = anchors.length > 0 ? new Painter(containerEl) : null;
    const orphaned = anchors.filter((anchor) => !painter.applyAnchor(anchor));
    updateOrphanBanner(containerEl, orphaned.map(({id}) => id));
  };

  // Adds marks and never takes one away: that is for a click, or for the application's next drawing.
  const reconcileAll = () => {
    mainObserver.disconnect();
    try {
      containers.forEach((containerEl, i) => reconcile(containerEl, currentAnchorsByContainer[i] ?? []));
    } finally {
      observe();
    }
  };

  const tick = () => {
    containers = findContainers();
    reconcileAll();
    const count = String(containers.length);
    const focused = computeFocusedIndex();
    const focusedIndex = focused < 0 ? '' : String(focused);
    if (`${count}, ${focusedIndex}` !== lastReported) {
      lastReported = `${count}, ${focusedIndex}`;
      post({type: 'ondrelHighlightContainersChanged', count, focusedIndex});
    }
    if (containers.length > 0 && !hostReadyPosted) {
      hostReadyPosted = true;
      post({type: 'ondrelHighlightHostReady'});
    }
  };

  // A throttle: while the document goes on changing, a tick still runs every 300 ms.
  const scheduleTick = () => {
    if (tickScheduled) {
      return;
    }
    tickScheduled = true;
    setTimeout(() => {
      tickScheduled = false;
      tick();
    }, TICK_MS);
  };

  // Shown again as it was left: the program knows the page that was shown meanwhile.
  window.addEventListener('pageshow', ({persisted}) => {
    if (persisted) {
      lastReported = '';
      hostReadyPosted = false;
      tick();
    }
  });

  const mainObserver = new MutationObserver(scheduleTick);
  const observe = () =>
      mainObserver.observe(document.documentElement, {childList: true, subtree: true, characterData: true});

  const isAnchor = (value) => typeof value?.id === 'string' && typeof value.exact === 'string' &&
      Number.isInteger(value.occurrenceIndex);
  const listOf = (value) => Array.isArray(value) ? [...value] : [];

  // The program's answer to a report: for each container all its highlights.
  window.__ondrelApplyHighlights = (anchorsByContainer) => {
    currentAnchorsByContainer = listOf(anchorsByContainer).map((anchors) => listOf(anchors).filter(isAnchor));
    reconcileAll();
  };

  // --- The button over a selection. ---

  const hideButton = () => {
    btn?.remove();
    btn = null;
  };

  const createHighlight = (containerEl, range) => {
    const index = containers.indexOf(containerEl);
    // Before the wrap, which splits text nodes.
    const anchor = computeAnchor(containerEl, range);
    hideButton();
    window.getSelection()?.removeAllRanges();
    if (!anchor || index < 0) {
      return;
    }
    const isSent = post({
      type: 'ondrelHighlightCreate',
      anchorJSON: JSON.stringify(anchor),
      containerIndex: String(index),
    });
    if (!isSent) {
      log(': not saved, since the program can\'t take it');  // a mark now would be gone the next time
      return;
    }
    currentAnchorsByContainer[index] = [...currentAnchorsByContainer[index] ?? [], anchor];
    wrapRange(containerEl, range, anchor.id);
  };

  const showButtonFor = (containerEl, range) => {
    hideButton();
    const rect = range.getBoundingClientRect();
    if (rect.width === 0 && rect.height === 0) {
      return;
    }
    const selected = range.cloneRange();
    btn = styled('div', BUTTON_STYLE);
    btn.textContent = 'Highlight';
    btn.style.left = `${Math.max(4, rect.left + rect.width / 2 - 40)}px`;
    btn.style.top = `${Math.max(4, rect.top - 32)}px`;
    btn.addEventListener('mousedown', (event) => {
      swallow(event);  // or the press takes the selection away first
      createHighlight(containerEl, selected);
    });
    document.body.append(btn);
  };

  const followSelection = () => {
    const selection = window.getSelection();
    const range =
        selection && !selection.isCollapsed && selection.rangeCount > 0 ? selection.getRangeAt(0) : null;
    // A selection across two messages is in neither.
    const containerEl = range && containerOf(range.commonAncestorContainer);
    if (containerEl) {
      showButtonFor(containerEl, range);
    } else {
      hideButton();
    }
  };

  document.addEventListener('selectionchange', () => {
    clearTimeout(selectionDebounce);
    selectionDebounce = setTimeout(followSelection, SELECTION_DEBOUNCE_MS);
  });

  document.addEventListener('mousedown', ({target}) => {
    if (btn && target !== btn) {
      hideButton();
    }
  }, true);

  // --- A click takes a highlight away, all its pieces. ---

  document.addEventListener('click', (event) => {
    const mark = event.target.closest?.(MARK_SELECTOR);
    if (!mark) {
      return;
    }
    swallow(event);  // a link under the mark isn't followed
    const containerEl = containerOf(mark);
    const index = containers.indexOf(containerEl);
    const id = mark.getAttribute(HID_ATTR);
    if (containerEl) {
      removeMarksById(containerEl, id);
    }
    forget(index, [id]);
    post({type: 'ondrelHighlightRemove', highlightId: id, containerIndex: String(index)});
  }, true);

  observe();
  tick();
})();
