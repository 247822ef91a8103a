// Where marks may stand without a change in how the message looks. A mark is an element: it makes a cell of a
// blank between two cells, and an item of a piece of text in a flex box.

const MARKUP_NAMESPACE = 'http://www.w3.org/1999/xhtml';
const BLANK = /^[ \t\n\r\f]*$/;
const VALUE_TAGS =
    new Set(['select', 'optgroup', 'option', 'textarea']);  // what they hold is no flow of text
const BLANKLESS_TAGS =
    new Set(['table', 'tbody', 'thead', 'tfoot', 'tr', 'colgroup', 'ul', 'ol', 'menu', 'dl']);
const TABLE_DISPLAY = /^(inline-)?table$|^table-(row|column|header|footer)/;
const ITEMS_DISPLAY = /(flex|grid|box)$/;
const INLINE_DISPLAY = /^(inline|ruby|contents|none)/;
const BOX_TAG = 'ondrel-text';

const isText = (node) => node.nodeType === Node.TEXT_NODE;

const displayOf = (element) => getComputedStyle(element).display;

const isBlock = (element) => !INLINE_DISPLAY.test(displayOf(element));

const isBlockBeside = (node, side) => {
  let beside = node[side];
  while (beside?.nodeType === Node.COMMENT_NODE) {
    beside = beside[side];
  }
  return beside?.nodeType === Node.ELEMENT_NODE && isBlock(beside);
};

// Where a blank has no place on the screen: between the parts of a table, items or blocks.
const isUnseenBlank = (node, parent, display) => BLANKLESS_TAGS.has(parent.localName) ||
    TABLE_DISPLAY.test(display) || ITEMS_DISPLAY.test(display) ||
    (BLANK.test(node.data) && (isBlockBeside(node, 'previousSibling') || isBlockBeside(node, 'nextSibling')));

// Whether that piece of a text node takes a mark, and whether the text needs a box for it first.
const placeForMark = (node, start, end) => {
  const parent = node.parentElement;
  if (parent.namespaceURI !== MARKUP_NAMESPACE || VALUE_TAGS.has(parent.localName)) {
    return {takesMark: false};
  }
  const display = displayOf(parent);
  const takesMark = !(BLANK.test(node.data.slice(start, end)) && isUnseenBlank(node, parent, display));
  return {takesMark, needsBox: takesMark && ITEMS_DISPLAY.test(display)};
};

const isTextRun = (node) => node && (isText(node) || node.nodeType === Node.COMMENT_NODE);

// The text directly in a flex or grid box is one item that has no element. It gets one that looks the same,
// in which marks split nothing.
const putInBox = (node) => {
  let first = node;
  while (isTextRun(first.previousSibling)) {
    first = first.previousSibling;
  }
  const box = styled(BOX_TAG, {all: 'unset'});
  first.before(box);
  while (isTextRun(box.nextSibling)) {
    box.append(box.nextSibling);
  }
};

const removeEmptyBox = (element) => {
  if (element.localName === BOX_TAG && !element.querySelector(MARK_SELECTOR)) {
    const {parentNode} = element;
    element.replaceWith(...element.childNodes);
    parentNode.normalize();
  }
};
