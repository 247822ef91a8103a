// The button over a selection.

const SELECTION_DEBOUNCE_MS = 150;
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

let btn = null;
let selectionDebounce = null;

const hideButton = () => {
  btn?.remove();
  btn = null;
};

const createHighlight = (containerEl, range) => {
  hideButton();
  const told = placeOf(containerEl);
  // Before the wrap, which splits text nodes.
  const leftOut = leftOutOf(containerEl);
  const anchor = computeAnchor(containerEl, range, leftOut);
  window.getSelection()?.removeAllRanges();
  if (!anchor || !containers.includes(containerEl)) {
    return;
  }
  if (!post({type: 'ondrelHighlightCreate', anchorJSON: JSON.stringify(anchor), ...told})) {
    log(': not saved, since the program can\'t take it');  // a mark now would be gone the next time
    return;
  }
  known.get(containerEl).made.push(anchor);
  wrapRange(containerEl, range, anchor.id, leftOut);
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

const offerButton = () => {
  document.addEventListener('selectionchange', () => {
    clearTimeout(selectionDebounce);
    selectionDebounce = setTimeout(followSelection, SELECTION_DEBOUNCE_MS);
  });
  document.addEventListener('mousedown', ({target}) => {
    if (btn && target !== btn) {
      hideButton();
    }
  }, true);
};
