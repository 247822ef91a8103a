// The message's body. The chip isn't part of the message, so the link stands here as well.

const SHARE_ATTRIBUTE = 'data-ondrel-files-share';  // on a paragraph of the body: the file's name

const errorText = (filename) => filledIn(TEXTS.notShared, filename);

const addToRichBody = (editor, {filename}, url) => {
  const words = url ? [`${TEXTS.shared} `, element('a', {href: url}, filename)] : [errorText(filename)];
  const paragraph = element('p', url ? {[SHARE_ATTRIBUTE]: filename} : {}, ...words);
  const quote = editor.querySelector('blockquote');
  if (quote) {
    quote.before(paragraph);
  } else {
    editor.append(paragraph);
  }
  sendInput(editor);
};

// Past what the application's framework has put before the text, so that it sees a change. What is selected
// and in view stays so: the user may be typing.
const replaceText = (textarea, start, end, text) => {
  const {scrollTop, selectionDirection} = textarea;
  textarea.setRangeText(text, start, end, 'preserve');
  textarea.setSelectionRange(textarea.selectionStart, textarea.selectionEnd, selectionDirection);
  textarea.scrollTop = scrollTop;
  sendInput(textarea);
};

const addToPlainBody = (textarea, share, url) => {
  const {filename} = share;
  const line = url ? `${TEXTS.shared} ${filename} - ${url}` : errorText(filename);
  share.line = url && line;
  const {value} = textarea;
  const beginsQuoted = value.startsWith('>');
  const quoteAt = beginsQuoted ? 0 : value.indexOf('\n>');
  const at = quoteAt < 0 ? value.length : quoteAt;
  replaceText(textarea, at, at, `${at > 0 ? '\n\n' : ''}${line}${beginsQuoted ? '\n' : ''}`);
};

// The link, or without a URL the line that says that there is none.
const addToBody = async (share, url) => {
  const editor = await editorOf(share.letter);
  (editor.matches(RICH_EDITOR_SELECTOR) ? addToRichBody : addToPlainBody)(editor, share, url);
};

// Deletes the first place where the text stands on lines of its own: one line, or several if the file's
// name has line breaks in it. What the user has changed is the user's.
const removeLines = (textarea, text) => {
  const lines = textarea.value.split('\n');
  const wanted = text.split(/\r\n|\r|\n/);
  const index = lines.findIndex((_, i) => wanted.every((line, j) => lines[i + j] === line));
  if (index < 0) {
    return;
  }
  const start = [...lines.slice(0, index), ''].join('\n').length;
  const end = start + wanted.join('\n').length;
  // With the line feed behind it, or before the last one.
  const isLast = end === textarea.value.length;
  replaceText(textarea, isLast ? Math.max(start - 1, 0) : start, isLast ? end : end + 1, '');
};

const removeFromBody = ({letter: {compose}, filename, line}) => {
  const editor = editorIn(compose);
  const paragraph = editor && findMarked(editor, SHARE_ATTRIBUTE, filename);
  if (paragraph) {
    paragraph.remove();
    sendInput(editor);
  } else if (editor?.matches(PLAIN_EDITOR_SELECTOR) && line) {
    removeLines(editor, line);
  }
};
