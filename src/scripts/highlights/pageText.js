// A container's text. Offsets count UTF-16 code units in its textContent.

const searches = new WeakMap();  // container -> TextSearch of its text

const textOf = (containerEl) => containerEl.textContent;

const searchOf = (containerEl) => {
  const text = textOf(containerEl);
  let search = searches.get(containerEl);
  if (search?.text !== text) {
    search = new TextSearch(text);
    searches.set(containerEl, search);
  }
  return search;
};

const plainTextOffset = (root, node, offset) => {
  const range = document.createRange();
  range.setStart(root, 0);
  range.setEnd(node, offset);
  return range.toString().length;
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
