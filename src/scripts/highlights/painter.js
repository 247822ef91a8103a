// Paints the highlights of one container in one reconcile.
class Painter {
  #containerEl;
  #markIds;
  #search = null;
  #nodes = null;
  #leftOut = null;

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
    if (wrapRange(this.#containerEl, paintRange, id, this.#leftOut)) {
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
    this.#leftOut ??= leftOutOf(this.#containerEl);
    this.#nodes ??= new TextNodes(this.#containerEl, this.#leftOut);
    const start = this.#nodes.pointAtOffset(startOffset);
    const end = this.#nodes.pointAtOffset(endOffset);
    if (!start || !end) {
      return false;
    }
    place(paintRange, start, end);
    return true;
  }
}
