// The application's refusal of a file.

const TOO_LARGE_PREFIX = 'Cannot attach file ';
const TOO_LARGE_INFIX = '. The total size of attached files cannot exceed ';
const TOO_LARGE_SUFFIX = 'MB.';

const seenModals = new WeakSet();
const partialModals = new Set();  // not fully rendered when they were seen

// The file's name in the modal's text; null if it has another shape. The number in it may change.
const parseTooLargeFilename = (text) => {
  const infixAt = text.indexOf(TOO_LARGE_INFIX, TOO_LARGE_PREFIX.length);
  return text.startsWith(TOO_LARGE_PREFIX) && infixAt >= 0 && text.endsWith(TOO_LARGE_SUFFIX) ?
      text.slice(TOO_LARGE_PREFIX.length, infixAt) :
      null;
};

const judgeModal = (modal) => {
  const heading = modal.querySelector('h1');
  const paragraph = modal.querySelector(ALERT_TEXT_SELECTOR);
  const isComplete = Boolean(heading && paragraph);
  partialModals[isComplete || !modal.isConnected ? 'delete' : 'add'](modal);
  if (seenModals.has(modal) || !isComplete) {
    return;
  }
  seenModals.add(modal);
  if (heading.textContent.trim() !== 'File too large') {
    return;
  }
  const text = paragraph.textContent.trim();
  const filename = parseTooLargeFilename(text);
  if (filename === null) {
    log(`modal titled "File too large" but message did not match the expected shape: ${text}`);
    return;
  }
  log(`"File too large" modal detected for: ${filename}`);
  const recent = takeRecentFile(filename);
  if (!recent) {
    log(`no recently captured File object matches "${
            filename}" — cannot auto-share it, leaving Fastmail's own ` +
        'message as-is');
    report('error', filename, 'no captured file');
    return;
  }
  heading.textContent = TEXTS.uploading;
  paragraph.textContent = filledIn(TEXTS.uploadingExplained, filename);
  enqueue(filename, recent);
};
