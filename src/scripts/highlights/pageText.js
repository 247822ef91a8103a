// A container's text, as the message has it. Offsets count UTF-16 code units in it.

// What nobody reads, what the user writes below, and our own banner.
const LEFT_OUT_SELECTOR =
    `style, script, title, template, noscript, [${ORPHAN_ATTR}], ${ANY_EDITOR_SELECTOR}`;

const searches = new WeakMap();  // container -> TextSearch of its text

const textWalker = (root) => document.createTreeWalker(root, NodeFilter.SHOW_TEXT);

// The text nodes that are no text of the message.
const leftOutOf = (containerEl) => {
  const leftOut = new Set();
  let last = null;
  for (const element of containerEl.querySelectorAll(LEFT_OUT_SELECTOR)) {
    if (last?.contains(element)) {
      continue;
    }
    last = element;
    const walker = textWalker(element);
    while (walker.nextNode()) {
      leftOut.add(walker.currentNode);
    }
  }
  return leftOut;
};

const textOf = (containerEl) => {
  const leftOut = leftOutOf(containerEl);
  if (leftOut.size === 0) {
    return containerEl.textContent;
  }
  const parts = [];
  for (const walker = textWalker(containerEl); walker.nextNode();) {
    if (!leftOut.has(walker.currentNode)) {
      parts.push(walker.currentNode.data);
    }
  }
  return parts.join('');
};

const searchOf = (containerEl) => {
  const text = textOf(containerEl);
  let search = searches.get(containerEl);
  if (search?.text !== text) {
    search = new TextSearch(text);
    searches.set(containerEl, search);
  }
  return search;
};

const plainTextOffset = (root, node, offset, leftOut) => {
  const range = document.createRange();
  range.setStart(root, 0);
  range.setEnd(node, offset);
  let length = range.toString().length;
  for (const text of leftOut) {
    if (text === node) {
      length -= offset;
    } else if (range.comparePoint(text, 0) === 0) {
      length -= text.length;
    }
  }
  return length;
};

// The text nodes of a container by their offsets. Wraps may split them meanwhile: the first piece of each
// stays in its place, and what is behind it is found from there.
class TextNodes {
  #walker;
  #nodes = [];
  #ends = [];

  constructor(root, leftOut) {
    this.#walker = textWalker(root);
    let consumed = 0;
    for (let node = this.#walker.nextNode(); node; node = this.#walker.nextNode()) {
      if (leftOut.has(node)) {
        continue;
      }
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
