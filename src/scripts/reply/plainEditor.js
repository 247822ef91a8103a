// The plain-text editor.

const QUOTE_WIDTH = 70;  // of a whole line, with its "> "
const QUOTE_MARKER = '> ';

// The paragraph as lines of at most `width` characters; a longer word stands alone, unbroken.
const wrapParagraph = (paragraph, width) => {
  const [line, ...words] = paragraph.split(' ');
  const lines = [line];
  for (const word of words) {
    const longer = `${lines.at(-1)} ${word}`;
    const fits = longer.length <= width;
    lines.splice(fits ? -1 : lines.length, 1, fits ? longer : word);
  }
  return lines.length > 1 && lines.at(-1) === '' ? lines.slice(0, -1) : lines;
};

const wrapQuoted = (text, width) =>
    text.split('\n')
        .flatMap((paragraph) => wrapParagraph(paragraph, width - QUOTE_MARKER.length))
        .map((line) => line === '' ? '>' : QUOTE_MARKER + line)
        .join('\n');

const isQuoted = (line) => line.startsWith('>');

// An empty line within a quote is a paragraph's end.
const isOfQuote = (line, i, lines) => isQuoted(line) || (line === '' && isQuoted(lines[i + 1] ?? ''));

const {set: setNativeValue} = Object.getOwnPropertyDescriptor(HTMLTextAreaElement.prototype, 'value');

const swapIn = (textarea, text) => {
  const lines = textarea.value.split('\n');
  const quoteStart = lines.findIndex(isQuoted);
  if (quoteStart < 0) {
    return false;
  }
  const behind = lines.findIndex((line, i) => i > quoteStart && !isOfQuote(line, i, lines));
  const quoteEnd = behind < 0 ? lines.length : behind;
  const [head, tail] = [lines.slice(0, quoteStart), lines.slice(quoteEnd)].map((part) => part.join('\n'));

  // The native setter, so that the application's framework sees a change.
  setNativeValue.call(textarea, `${head && `${head}\n`}${wrapQuoted(text, QUOTE_WIDTH)}\n${tail}`);
  sendOwnInput(textarea);
  // Back to where the application puts the caret. Never by focus(): on that, the application copies the
  // whole quote back from its own state.
  if (textarea === document.activeElement) {
    textarea.setSelectionRange(0, 0);
  }
  log(`plain-text swap applied (${
      tail === '' ? 'nothing trailing the quote to preserve' :
                    `preserved ${lines.length - quoteEnd} trailing line(s) after the quote`})`);
  return true;
};

const trySwapPlainText = () => {
  const textareas = replyEditors(pendingSwap, PLAIN_EDITOR_SELECTOR);
  const isSwapped = textareas.some((textarea) => swapIn(textarea, pendingSwap.text));
  if (!isSwapped && textareas.length > 0) {
    log(`found ${textareas.length} textarea(s), none matched the quote marker yet`);
  }
  return isSwapped;
};
