// A click takes a highlight away, all its pieces. Selecting words in it doesn't: a drag and a double click
// end in clicks, too.

const CLICK_WIDTH = 4;        // pixels that a hand may move
const DOUBLE_CLICK_MS = 400;  // until then a second click may follow, as the toolkit counts

let pressedAt = null;  // the last press of a button, until its click
let pending = null;    // {timer, remove}: the removal that the first of two clicks would be

const isAnythingSelected = () => window.getSelection()?.isCollapsed === false;

// Messages may lie in each other.
const ownerOf = (mark, id) => {
  const around = containers.filter((containerEl) => containerEl.contains(mark));
  return around.find((containerEl) => hasAnchor(containerEl, id)) ?? around[0];
};

const removeHighlight = (containerEl, id) => {
  if (containerEl) {
    removeMarksById(containerEl, id);
    forget(containerEl, (forgotten) => forgotten === id);
  }
  post({type: 'ondrelHighlightRemove', highlightId: id, ...placeOf(containerEl)});
};

const takePress = ({clientX, clientY, detail}) => {
  pressedAt = {clientX, clientY};
  if (detail > 1) {
    clearTimeout(pending?.timer);
    pending = null;
  }
};

const finishPending = () => {
  const {timer, remove} = pending ?? {};
  pending = null;
  clearTimeout(timer);
  remove?.();
};

const takeClick = (event) => {
  const from = pressedAt ?? event;
  pressedAt = null;
  const mark = event.target.closest?.(MARK_SELECTOR);
  if (!mark) {
    return;
  }
  swallow(event);  // a link under the mark isn't followed
  const hasMoved = Math.hypot(event.clientX - from.clientX, event.clientY - from.clientY) > CLICK_WIDTH;
  if (hasMoved || event.detail > 1 || isAnythingSelected()) {
    return;
  }
  finishPending();
  const id = mark.getAttribute(HID_ATTR);
  const containerEl = ownerOf(mark, id);
  const remove = () => removeHighlight(containerEl, id);
  if (event.detail === 0) {  // by no pointer
    remove();
  } else {
    pending = {
      remove: () => isAnythingSelected() || remove(),
      timer: setTimeout(finishPending, DOUBLE_CLICK_MS),
    };
  }
};

const takeClicks = () => {
  document.addEventListener('mousedown', takePress, true);
  document.addEventListener('click', takeClick, true);
};
