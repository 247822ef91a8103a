// What is selected, and the highlight that it becomes.

const isShown = ({width, height}) => width > 0 || height > 0;

// Null where nothing can be highlighted. A selection across two messages is in neither.
const findSelected = () => {
  const selection = window.getSelection();
  if (!selection || selection.isCollapsed || selection.rangeCount === 0) {
    return null;
  }
  const range = selection.getRangeAt(0);
  const containerEl = containerOf(range.commonAncestorContainer);
  const isMarkable = containerEl && isShown(range.getBoundingClientRect()) &&
      hasPieces(containerEl, range, leftOutOf(containerEl));
  return isMarkable ? {containerEl, range} : null;
};

// Whether something of the box is in the window and in what scrolls around the element.
const isInSight = (rect, element) => {
  let [left, top, right, bottom] = [rect.left, rect.top, rect.right, rect.bottom];
  const cut = (box) => {
    [left, top] = [Math.max(left, box.left), Math.max(top, box.top)];
    [right, bottom] = [Math.min(right, box.right), Math.min(bottom, box.bottom)];
  };
  cut({left: 0, top: 0, right: innerWidth, bottom: innerHeight});
  // What the body cuts off, the window does.
  for (let around = element; around && around !== document.body; around = around.parentElement) {
    const {overflowX, overflowY, position, display} = getComputedStyle(around);
    if ((overflowX !== 'visible' || overflowY !== 'visible') && !INLINE_DISPLAY.test(display)) {
      cut(around.getBoundingClientRect());
    }
    if (position === 'fixed') {
      break;
    }
  }
  return left < right && top < bottom;
};

// False when the text has gone meanwhile or the program can't have it.
const createHighlight = ({containerEl, range}) => {
  hideButton();
  const told = placeOf(containerEl);
  // Before the wrap, which splits text nodes.
  const leftOut = leftOutOf(containerEl);
  const anchor = computeAnchor(containerEl, range, leftOut);
  window.getSelection()?.removeAllRanges();
  if (!anchor || !containers.includes(containerEl)) {
    return false;
  }
  if (!post({type: 'ondrelHighlightCreate', anchorJSON: JSON.stringify(anchor), ...told})) {
    log(': not saved, since the program can\'t take it');  // a mark now would be gone the next time
    return false;
  }
  known.get(containerEl).made.push(anchor);
  wrapRange(containerEl, range, anchor.id, leftOut);
  return true;
};

const highlightIn = (frame) => {
  try {
    return frame.__ondrelHighlightSelection?.() === true;
  } catch {
    return false;  // another origin's
  }
};

// Highlights what is selected in this document, or in a frame below it; in the one that has the focus first.
// False when nothing can be highlighted.
const highlightSelection = () => {
  const focused = document.activeElement?.contentWindow;
  if (focused && highlightIn(focused)) {
    return true;
  }
  look();
  const selected = findSelected();
  return selected ? createHighlight(selected) :
                    Array.from({length: window.length}, (_, i) => window[i]).some(highlightIn);
};

const takeOrders = () => {
  window.__ondrelHighlightSelection = highlightSelection;
};
