// An anchor tells where a highlight stands in a message's plain text.

const CONTEXT_WIDTH = 32;  // UTF-16 code units on each side

const randomId = () => {
  if (crypto.randomUUID) {
    return crypto.randomUUID();
  }
  // Pages without transport security lack it.
  const bytes = crypto.getRandomValues(new Uint8Array(16));
  bytes[6] = bytes[6] & 0x0f | 0x40;
  bytes[8] = bytes[8] & 0x3f | 0x80;
  return Array.from(bytes, (byte) => byte.toString(16).padStart(2, '0'))
      .join('')
      .replace(/^(.{8})(.{4})(.{4})(.{4})/, '$1-$2-$3-$4-');
};

// Without the half of a character that the cut has left at an edge: the program takes Unicode only.
const wholeCharacters = (text) => text.replace(/^[\udc00-\udfff]|[\ud800-\udbff]$/g, '').toWellFormed();

const occurrenceIndexOf = (text, exact, startOffset) => {
  let index = 0;
  for (const start of occurrencesOf(text, exact)) {
    if (start >= startOffset) {
      break;
    }
    ++index;
  }
  return index;
};

// Null for no text. `quote` is there where readers are better served by it.
const computeAnchor = (containerEl, range, leftOut) => {
  const full = textOf(containerEl);
  const startOffset = plainTextOffset(containerEl, range.startContainer, range.startOffset, leftOut);
  const endOffset = plainTextOffset(containerEl, range.endContainer, range.endOffset, leftOut);
  const exact = full.slice(startOffset, endOffset);
  if (exact === '') {
    return null;
  }
  const from = Math.max(0, startOffset - CONTEXT_WIDTH);
  const to = Math.min(full.length, endOffset + CONTEXT_WIDTH);
  const textsOf = ([before, text, after]) =>
      ({exact: text, prefix: wholeCharacters(before), suffix: wholeCharacters(after)});
  const plain = textsOf([full.slice(from, startOffset), exact, full.slice(endOffset, to)]);
  const quote = textsOf(readersTexts(containerEl, [from, startOffset, endOffset, to], leftOut));
  return {
    id: randomId(),
    ...plain,
    occurrenceIndex: occurrenceIndexOf(full, exact, startOffset),
    ...JSON.stringify(quote) === JSON.stringify(plain) ? {} : {quote},
  };
};
