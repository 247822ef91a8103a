// A click takes a highlight away, all its pieces.

const takeClick = (event) => {
  const mark = event.target.closest?.(MARK_SELECTOR);
  if (!mark) {
    return;
  }
  swallow(event);  // a link under the mark isn't followed
  const id = mark.getAttribute(HID_ATTR);
  const around = containers.filter((containerEl) => containerEl.contains(mark));
  const containerEl = around.find((candidate) => hasAnchor(candidate, id)) ?? around[0];
  if (containerEl) {
    removeMarksById(containerEl, id);
    forget(containerEl, (forgotten) => forgotten === id);
  }
  post({type: 'ondrelHighlightRemove', highlightId: id, ...placeOf(containerEl)});
};

const takeClicks = () => document.addEventListener('click', takeClick, true);
