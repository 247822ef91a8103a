// The text of the copy. A range's own text has nothing between blocks, and the rendered text needs a layout.
// Lines and words are what a page shows of them.

const TEXT_BLOCK_TAGS = setOf('DIV P LI BLOCKQUOTE TR TABLE UL OL H1 H2 H3 H4 H5 H6 PRE');

const fragmentToText = (content) => {
  const pieces = [];
  let isLineStart = true;
  let hasGap = false;  // a blank, if a word follows
  const write = (text) => {
    if (text !== '') {
      pieces.push(hasGap && !text.startsWith('\n') ? ' ' : '', text);
      [isLineStart, hasGap] = [text.endsWith('\n'), false];
    }
  };
  const writeLine = (line) => line.split(/[ \t\n\r\f]+/).forEach((word, i) => {
    hasGap ||= i > 0 && !isLineStart;
    write(word);
  });
  const writeText = (text, space) => {
    const isKept = (part) => space === 'preserve-breaks' ? part === '\n' : space !== 'collapse';
    text.split(/(\n)/).forEach((part) => (isKept(part) ? write : writeLine)(part));
  };
  const writeNode = (node) => {
    const {tagName} = node;
    const isBlock = TEXT_BLOCK_TAGS.has(tagName);
    if (isText(node)) {
      writeText(node.data, spaceOfCopy.get(node));
      return;
    }
    write(tagName === 'BR' || (isBlock && !isLineStart) ? '\n' : '');
    node.childNodes.forEach(writeNode);
    write(tagName === 'P' ? '\n\n' : isBlock ? '\n' : '');
    hasGap ||= ['TD', 'TH'].includes(tagName) && !isLineStart;
  };
  writeNode(content);
  return pieces.join('').replace(/\n{3,}/g, '\n\n').replace(/^\n+|\n+$/g, '');
};
