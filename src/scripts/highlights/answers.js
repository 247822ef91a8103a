// What the program has to say of highlights.

const isAnchor = (value) => typeof value?.id === 'string' && typeof value.exact === 'string' &&
    Number.isInteger(value.occurrenceIndex);
const listOf = (value) => Array.isArray(value) ? [...value] : [];

// Marks of highlights that another message has turned out to have. Messages may lie in each other.
const removeStrays = (containerEl) => {
  const around = containers.filter((other) => other.contains(containerEl) || containerEl.contains(other));
  marksIn(containerEl)
      .filter(
          (mark) =>
              !around.some((other) => other.contains(mark) && hasAnchor(other, mark.getAttribute(HID_ATTR))))
      .forEach(unwrapMark);
};

// The answer to a report, to the last one if there is no number: for each of its containers all highlights.
// An element may be gone since, or show another message.
const applyHighlights = (anchorsByContainer, number) => {
  const lists = listOf(anchorsByContainer);
  const answered = listOf(reported.get(Number(number ?? reportNumber)));
  const isFor = (containerEl) =>
      (known.get(containerEl)?.since ?? Infinity) <= Number(number ?? reportNumber);
  answered.forEach((containerEl, i) => {
    if (isFor(containerEl)) {
      learn(containerEl, listOf(lists[i]).filter(isAnchor));
    }
  });
  // An answer without a number may be to an earlier report.
  if (number !== undefined) {
    unobserved(
        () => answered.filter((containerEl, i) => Array.isArray(lists[i]) && isFor(containerEl))
                  .forEach(removeStrays));
  }
  reconcileAll();
};

// Takes highlights off the page, all of them for null.
const removeHighlights = (ids) => {
  const removed = new Set(listOf(ids));
  const isRemoved = (id) => ids === null || removed.has(id);
  containers.forEach((containerEl) => forget(containerEl, isRemoved));
  unobserved(
      () => marksIn(document).filter((mark) => isRemoved(mark.getAttribute(HID_ATTR))).forEach(unwrapMark));
  reconcileAll();
};

const takeAnswers = () => {
  window.__ondrelApplyHighlights = applyHighlights;
  window.__ondrelRemoveHighlights = removeHighlights;
};
