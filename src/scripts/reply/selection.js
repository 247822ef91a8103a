// The selection in a message that a reply would quote.

const SELECTION_DEBOUNCE_MS = 150;

let lastSelection = null;  // {content, text, card, capturedAt}
let selectionDebounce = 0;

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
