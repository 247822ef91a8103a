// A click takes a highlight away, all its pieces.

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
