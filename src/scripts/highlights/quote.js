// A highlight for readers: a blank stands between the words of neighbouring blocks, where the message's plain
// text has nothing.

const isEdge = (element) => element.localName === 'br' || isBlock(element);

// Whether a block begins or ends on the way from one node to the next of a walk.
const passesEdge = (node, next) => {
  for (let left = node; !left.contains(next); left = left.parentNode) {
    if (!isText(left) && isEdge(left)) {
      return true;
    }
  }
  return !isText(next) && isEdge(next);
};

// What stands between each two of the offsets, the highlight between the second and the third.
const readersTexts = (containerEl, cuts, leftOut) => {
  const texts = ['', '', ''];
  const first = new TextNodes(containerEl, leftOut).pointAtOffset(cuts[0]);
  const walker = document.createTreeWalker(containerEl, NodeFilter.SHOW_ELEMENT | NodeFilter.SHOW_TEXT);
  let offset = cuts[0] - first.offset;  // of the node's beginning
  let isApart = false;                  // from the text before, by a block's edge
  let last = ' ';                       // what was written last

  const write = (i, text) => {
    if (isApart && !/\s$/.test(last) && !/^\s/.test(text)) {
      texts[i === 1 && texts[i] === '' ? 0 : i] += ' ';
    }
    texts[i] += text;
    last = text;
    isApart = false;
  };

  let node = walker.currentNode = first.node;
  while (node && offset < cuts.at(-1)) {
    if (isText(node) && !leftOut.has(node)) {
      texts.forEach((_, i) => {
        const text = node.data.slice(Math.max(0, cuts[i] - offset), Math.max(0, cuts[i + 1] - offset));
        if (text !== '') {
          write(i, text);
        }
      });
      offset += node.length;
    }
    const next = walker.nextNode();
    isApart ||= next !== null && passesEdge(node, next);
    node = next;
  }
  return texts;
};
