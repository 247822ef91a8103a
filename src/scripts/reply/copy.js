// The copy of what is selected: made at once, since others change the text nodes under a live range. It is
// made anew of what a quote needs, in a document in which nothing loads or runs, and is never written as
// markup and read again: a parser can take text of the message for elements then. What the application does
// that with later, its drafts, holds nothing of that kind: each tag in what is written is one of an element
// that was let in, since nothing is left that makes a parser read "<" otherwise (styles, titles, text fields,
// comments, elements of other languages).

const inertDocument = document.implementation.createHTMLDocument('');
const spaceOfCopy = new WeakMap();  // copied text -> how its white space collapses

const copyOf = (element) => {
  const copy = inertDocument.createElement(tagOf(element));
  for (const attribute of [...element.attributes].filter(isAllowedAttribute)) {
    copy.setAttribute(attribute.name, attribute.value);
  }
  return copy;
};

// From each element around the node, below `top`, to its child on the way down to the node.
const pathTo = (node, top) => {
  const path = new Map();
  for (let child = node; child !== top; child = parentOf(child)) {
    path.set(parentOf(child), child);
  }
  return path;
};

// Cells and rows alone would be lost on the way to the reader: they stay in a table.
const topOf = ({commonAncestorContainer}) => {
  let top = commonAncestorContainer;
  while (isElement(top) && TABLE_PARTS.has(tagOf(top))) {
    top = parentOf(top);
  }
  return top;
};

const copySelected = (range) => {
  const {startContainer, startOffset, endContainer, endOffset} = range;
  const top = topOf(range);
  const [toStart, toEnd] = [startContainer, endContainer].map((node) => pathTo(node, top));
  const childAt = (parent, offset) => childNodesOf(parent)[offset] ?? null;
  const firstIn = (parent) =>
      parent === startContainer ? childAt(parent, startOffset) : toStart.get(parent) ?? firstChildOf(parent);
  // The child behind the last one.
  const endIn = (parent) => parent === endContainer ? childAt(parent, endOffset) :
      toEnd.has(parent)                             ? nextSiblingOf(toEnd.get(parent)) :
                                                      null;
  // Asked once for each parent, and only where it makes a difference: styles take long.
  const spaces = new Map();
  const spaceIn = (text) => {
    const parent = parentOf(text);
    if (!spaces.has(parent) && /[\t\n\r\f]|  /.test(text.data)) {
      spaces.set(parent, getComputedStyle(parent).whiteSpaceCollapse);
    }
    return spaces.get(parent) ?? 'collapse';
  };
  const copyNode = (node, target) => {
    if (isText(node)) {
      const copy = inertDocument.createTextNode(node.data.slice(
          node === startContainer ? startOffset : 0, node === endContainer ? endOffset : undefined));
      spaceOfCopy.set(copy, spaceIn(node));
      target.append(copy);
    } else if (isElement(node) && !isDropped(node)) {
      copyChildren(node, isKept(node) ? target.appendChild(copyOf(node)) : target);
    }
  };
  const copyChildren = (source, target) => {
    const end = endIn(source);
    for (let node = firstIn(source); node && node !== end; node = nextSiblingOf(node)) {
      copyNode(node, target);
    }
  };

  const content = inertDocument.createDocumentFragment();
  (isText(top) ? copyNode : copyChildren)(top, content);
  return content;
};
