// Marks stand around text nodes only, so that the application's elements and listeners stay.

const MARK_STYLE = {
  backgroundColor: '#ffe066',
  borderRadius: '2px',
  cursor: 'pointer'
};

const markTemplate = styled('mark', MARK_STYLE);

const newMark = (id) => {
  const mark = markTemplate.cloneNode();
  mark.setAttribute(HID_ATTR, id);
  return mark;
};

const marksIn = (containerEl) => [...containerEl.querySelectorAll(MARK_SELECTOR)];

// The range's part of each text node in it that takes a mark.
function* piecesOf(containerEl, range, leftOut) {
  const {startContainer, startOffset, endContainer, endOffset} = range;
  const walker = textWalker(containerEl);
  // From the start on, since a walk through all of a long message for each highlight takes too long.
  walker.currentNode = containerEl.contains(startContainer) ? startContainer : containerEl;
  let node = isText(walker.currentNode) ? walker.currentNode : walker.nextNode();
  // Comparing places is slow among many siblings; between two text nodes the walk alone tells.
  const isBehind = (candidate) => !isText(endContainer) && range.comparePoint(candidate, 0) > 0;
  const isInside = (candidate) => isText(startContainer) || range.intersectsNode(candidate);
  for (; node && !isBehind(node); node = walker.nextNode()) {
    const start = node === startContainer ? startOffset : 0;
    const end = node === endContainer ? endOffset : node.length;
    if (start < end && !leftOut.has(node) && isInside(node)) {
      const {takesMark, needsBox} = placeForMark(node, start, end);
      if (takesMark) {
        yield {node, start, end, needsBox};
      }
    }
    if (node === endContainer) {
      break;
    }
  }
}

// Made once: at each change the document brings all ranges up to date that haven't been collected yet.
const paintRange = document.createRange();
const pieceRange = document.createRange();

// By way of the document's start: the engine compares a range's new place with its old one, which among
// many siblings takes long.
const place = (range, start, end) => {
  range.setStart(document, 0);
  range.collapse(true);
  range.setStart(start.node, start.offset);
  range.setEnd(end.node, end.offset);
};

const hasPieces = (containerEl, range, leftOut) => !piecesOf(containerEl, range, leftOut).next().done;

const wrapRange = (containerEl, range, id, leftOut) => {
  try {
    for (const {node, start, end, needsBox} of [...piecesOf(containerEl, range, leftOut)]) {
      if (needsBox && node.parentNode.localName !== BOX_TAG) {
        putInBox(node);
      }
      place(pieceRange, {node, offset: start}, {node, offset: end});
      pieceRange.surroundContents(newMark(id));
    }
    return true;
  } catch (error) {
    log(` wrapRange failed: ${error}`);
    return false;
  }
};

const unwrapMark = (mark) => {
  const {parentNode} = mark;
  mark.replaceWith(...mark.childNodes);
  parentNode.normalize();
  removeEmptyBox(parentNode);
};

// Compared and never put into a selector: ids come from files, too.
const removeMarksById = (containerEl, id) =>
    marksIn(containerEl).filter((mark) => mark.getAttribute(HID_ATTR) === id).forEach(unwrapMark);

// Leaves nothing of ours in it.
const clearContainer = (containerEl) => {
  marksIn(containerEl).forEach(unwrapMark);
  bannerOf(containerEl)?.remove();
};
