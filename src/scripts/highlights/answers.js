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
const applyHighlights = (anchorsByContainer, number = null) => {
  const lists = listOf(anchorsByContainer);
  const answered = Number(number ?? reportNumber);
  const concerned = listOf(reported.get(answered))
                        .map((containerEl, i) => ({containerEl, list: lists[i]}))
                        .filter(({containerEl}) => known.get(containerEl)?.since <= answered);
  concerned.forEach(({containerEl, list}) => learn(containerEl, listOf(list).filter(isAnchor)));
  // An answer without a number may be to an earlier report.
  if (number !== null) {
    const listed = concerned.filter(({list}) => Array.isArray(list));
    unobserved(() => listed.forEach(({containerEl}) => removeStrays(containerEl)));
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
