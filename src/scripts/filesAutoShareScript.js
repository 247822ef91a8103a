// Turns the application's refusal of a large attachment into a share link. It keeps hold of the files that
// the user attaches, notices the "File too large" modal, uploads the file to the service's storage through
// the application's own objects, and writes the link into the message.

const CAPTURE_TTL_MS = 30000;
const CORRELATE_FRESHNESS_MS = 15000;
const QUICK_POLL_ATTEMPTS = 40;
const QUICK_POLL_INTERVAL_MS = 250;
const UPLOAD_POLL_ATTEMPTS = 600;
const UPLOAD_POLL_INTERVAL_MS = 1000;
const STEPS_MS = 500;
const TOO_LARGE_PREFIX = 'Cannot attach file ';
const TOO_LARGE_INFIX = '. The total size of attached files cannot exceed ';
const TOO_LARGE_SUFFIX = 'MB.';
const CHIP_ATTRIBUTE = 'data-ondrel-files-chip';    // on a chip: the file's name
const SHARE_ATTRIBUTE = 'data-ondrel-files-share';  // on a paragraph of the body: the file's name
const SPINNER_STYLE_ID = 'ondrel-files-spinner-style';

let recentFiles = [];            // {name, file, compose, capturedAt}, oldest first
let shares = Promise.resolve();  // the end of the last one; each is a {filename, file, letter, line}
const openLetters = new Set();   // of the shares that aren't done
const seenModals = new WeakSet();
const partialModals = new Set();  // not fully rendered when they were seen

const log = logger('files-auto-share: ');

const report = (status, filename, reason = '') =>
    post({type: 'ondrelFilesAutoShare', status, filename, reason});

// --- Waiting. ---

const valueOrNull = (fn) => {
  try {
    return fn();
  } catch {
    return null;
  }
};

// The first truthy value of fn; an exception of it counts as none.
const poll = async (fn, attempts, intervalMs, description) => {
  for (let attempt = 0; attempt < attempts; ++attempt) {
    openLetters.forEach(look);
    const value = valueOrNull(fn);
    if (value) {
      return value;
    }
    await new Promise((resolve) => setTimeout(resolve, intervalMs));
  }
  throw new Error(`timed out waiting for ${description}`);
};

const pollQuickly = (fn, description) => poll(fn, QUICK_POLL_ATTEMPTS, QUICK_POLL_INTERVAL_MS, description);

// --- The letter that a file belongs to. The link is written nowhere else. ---

const findEditor = (root) =>
    root.querySelector(RICH_EDITOR_SELECTOR) ?? root.querySelector(PLAIN_EDITOR_SELECTOR);

// The compose element around an event's target, or else the one that is shown; an editor that stands alone
// is its own. Null if nothing is being written.
const composeAround = (target) => {
  const editor = findEditor(document);
  return target?.closest?.(COMPOSE_SELECTOR) ?? editor?.closest(COMPOSE_SELECTOR) ?? editor ??
      document.querySelector(COMPOSE_SELECTOR);
};

const editorIn = (compose) => compose.matches(EDITOR_SELECTOR) ? compose : findEditor(compose);

// What tells one letter from another: what the application's draft says, and the editor with its text.
const traitsOf = ({compose, draft}) => {
  const editor = editorIn(compose);
  const to =
      Array.from(draft?.to ?? [], (each) => each?.email ?? valueOrNull(() => each.get('email')) ?? each);
  return {
    id: valueOrNull(() => draft.id()) ?? draft?.id,
    editor,
    texts: [to.join(), draft?.subject, editor?.value ?? editor?.textContent].map(
        (text) => String(text ?? '').slice(0, 5000).replace(/[\s>]+/g, '')),
  };
};

// An application may show another letter in the same element. In one letter, one thing changes at a time:
// drafts get another id when they are saved, editors change with the format, users write things anew.
const isOtherLetter = (before, now) => {
  const beginsIn = (text, other) => text !== '' && other.includes(text.slice(0, 12));
  const isLost = (text, i) => text && !beginsIn(text, now.texts[i]) && !beginsIn(now.texts[i], text);
  const isReplaced = (trait) => before[trait] && now[trait] && before[trait] !== now[trait];
  return before.texts.filter(isLost).length + ['id', 'editor'].filter(isReplaced).length > 1;
};

// Compares with what was there about a second ago: an application may take several steps.
const look = (letter) => {
  letter.draft = valueOrNull(() => appController().draft) ?? letter.draft;
  const now = letter.compose?.isConnected && valueOrNull(() => traitsOf(letter));
  if (!now) {
    return;
  }
  letter.isGone ||= letter.seen.length > 0 && isOtherLetter(letter.seen[0], now);
  if (!(Date.now() - letter.seen.at(-1)?.at < STEPS_MS)) {
    letter.seen = [...letter.seen.slice(-1), {...now, at: Date.now()}];
  }
};

// The editor of the letter, once it is shown. Another letter in its place isn't waited for.
const editorOf = (letter) => poll(
    () => !letter.isGone && letter.compose.isConnected && editorIn(letter.compose),
    letter.isGone ? 1 : QUICK_POLL_ATTEMPTS, QUICK_POLL_INTERVAL_MS, 'the compose editor to be present');

// --- The files that the user attaches, by whichever way. ---

const isWithin = (limitMs) => ({capturedAt}) => Date.now() - capturedAt <= limitMs;

const capture = (files, source, target) => {
  for (const file of files ?? []) {
    recentFiles.push({name: file.name, file, compose: composeAround(target), capturedAt: Date.now()});
    log(`captured file via ${source}: ${file.name} (${file.size} bytes)`);
  }
  recentFiles = recentFiles.filter(isWithin(CAPTURE_TTL_MS));
};

// Takes the newest capture of that name out of the list; none if there is none that is fresh enough.
const takeRecentFile = (name) => {
  const isFresh = isWithin(CORRELATE_FRESHNESS_MS);
  const index = recentFiles.findLastIndex((record) => record.name === name && isFresh(record));
  return index < 0 ? undefined : recentFiles.splice(index, 1)[0];
};

document.addEventListener('change', ({target}) => capture(target.files, 'change', target), true);
document.addEventListener(
    'drop', ({target, dataTransfer}) => capture(dataTransfer?.files, 'drop', target), true);
document.addEventListener(
    'paste', ({target, clipboardData}) => capture(clipboardData?.files, 'paste', target), true);

// --- The chip: looks like an attachment of the application, but is made of plain elements. A copied
// progress element of the application would grow over the whole page. ---

const filled = (made, attributes, children) => {
  Object.entries(attributes).forEach(([name, value]) => made.setAttribute(name, value));
  made.append(...children);
  return made;
};
const element = (tag, attributes, ...children) => filled(document.createElement(tag), attributes, children);
const svgElement = (tag, attributes, ...children) =>
    filled(document.createElementNS('http://www.w3.org/2000/svg', tag), attributes, children);
const icon = (attributes, ...shapes) =>
    svgElement('svg', {viewBox: '0 0 24 24', role: 'presentation', ...attributes}, ...shapes);

const paperclipIcon = () => icon(
    {class: 'u-standardicon v-Icon i-attachment u-sq-20 u-ml-2'}, svgElement('path', {
      d: 'M9.42,13l6.23-6.19c1.13-1.13,2.22-1.2,3-.43.61.61,1.08,1.74-.22,3l-7.94,7.89a3.36,3.36,0,0,1-4.75,' +
          '0h0a3.33,3.33,0,0,1,0-4.72l6.84-6.8',
    }));

const removeIcon = () => icon(
    {
      class: 'v-Icon i-cancel',
      fill: 'none',
      stroke: 'currentColor',
      'stroke-linecap': 'round',
      'stroke-linejoin': 'round',
      'stroke-width': '1.5',
    },
    svgElement('line', {x1: 16, y1: 8, x2: 8, y2: 16}), svgElement('line', {x1: 8, y1: 8, x2: 16, y2: 16}));

const addSpinnerStyle = () => {
  if (!document.getElementById(SPINNER_STYLE_ID)) {
    document.head.append(element(
        'style', {id: SPINNER_STYLE_ID},
        '@keyframes ondrelFilesSpin { to { transform: rotate(360deg); } } ' +
            '.ondrel-files-spinner { display: inline-block; width: 9px; height: 9px; margin-right: 5px; ' +
            'border: 1.5px solid rgba(0,0,0,0.18); border-top-color: rgba(0,0,0,0.55); ' +
            'border-radius: 50%; animation: ondrelFilesSpin 0.8s linear infinite; ' +
            'vertical-align: middle; }'));
  }
};

const buildChip = (filename) => {
  addSpinnerStyle();
  const removeButton =
      element('button', {class: 'v-Button v-ComposeAttachment-remove', type: 'button'}, removeIcon());
  removeButton.style.visibility = 'hidden';
  const row = element(
      'div', {class: 'u-flex u-relative u-items-center'}, paperclipIcon(),
      element('span', {class: 'v-ComposeAttachment-label'}, filename),
      element(
          'p', {class: 'v-ComposeAttachment-size'}, element('span', {class: 'ondrel-files-spinner'}),
          'Uploading via Fastmail Files…'),
      element('span', {class: 'v-ComposeAttachment-divider'}), removeButton);
  return element('div', {class: 'v-ComposeAttachment', [CHIP_ATTRIBUTE]: filename}, row);
};

// By comparison and not by a selector: a name may hold anything.
const findMarked = (root, attribute, filename) => [...root.querySelectorAll(`[${attribute}]`)].find(
    (marked) => marked.getAttribute(attribute) === filename);

// Where the letter's chips are: in what belongs to it, or the document for an editor that stands alone.
const chipRoot = ({letter: {compose}}) => compose?.matches(COMPOSE_SELECTOR) ? compose : document;
const findChip = (share) => findMarked(chipRoot(share), CHIP_ATTRIBUTE, share.filename);

const showUploadingChip = (share) => {
  // The row of attachments is there from the moment when compose opens, hidden while it is empty.
  const row = chipRoot(share).querySelector(ATTACHMENTS_SELECTOR);
  if (!row) {
    throw new Error('could not find the attachment chip row');
  }
  if (!findChip(share)) {
    row.append(buildChip(share.filename));
  }
};

const resolveChipToSuccess = (share, url) => {
  const {filename} = share;
  const chip = findChip(share);
  if (!chip) {
    return;
  }
  chip.querySelector('.v-ComposeAttachment-label')
      .replaceWith(element(
          'a', {class: 'v-ComposeAttachment-label', href: url, target: '_blank', rel: 'noopener'}, filename));
  chip.querySelector('.v-ComposeAttachment-size').textContent = 'via Fastmail Files';
  const removeButton = chip.querySelector('.v-ComposeAttachment-remove');
  removeButton.style.visibility = '';
  removeButton.addEventListener('click', (event) => {
    event.preventDefault();
    chip.remove();
    removeFromBody(share);
    log(`removed the Fastmail Files share for "${filename}"`);
  });
};

// --- The message's body. The chip isn't part of the message, so the link stands here as well. ---

const errorText = (filename) => `Could not share "${filename}" via Fastmail Files — attach it manually.`;

const addToRichBody = (editor, {filename}, url) => {
  const words =
      url ? ['Shared via Fastmail Files: ', element('a', {href: url}, filename)] : [errorText(filename)];
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
  const line = url ? `Shared via Fastmail Files: ${filename} - ${url}` : errorText(filename);
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

// --- The upload, through the application's own objects. ---

const loadFilesModule = async (fm) => {
  // The storage is a module of its own, whose classes don't exist before. Loading it doesn't change the
  // view.
  try {
    await fm.router.loadApp('files');
  } catch (error) {
    log(`loadApp("files") threw, continuing in case the classes are already available: ${error}`);
  }
  if (!fm.classes?.StorageNode || !fm.classes.StorageNodeListController) {
    throw new Error('FastMail Files classes still not available after loadApp("files")');
  }
};

const startUpload = (fm, folder, file) => {
  const controller = new fm.classes.StorageNodeListController({store: fm.store, folder});
  try {
    controller.uploadToCurrent([file]);
  } catch (error) {
    log('uploadToCurrent threw (expected — it tries to notify a UI view that is not mounted, after already ' +
        `starting the upload): ${error}`);
  }
};

// The record of the file once it is uploaded. Older files may have its name, in records of their own or in
// one that gets the new blob, and may become known only now.
const upload = async (fm, folder, {filename, file}) => {
  const findNode = (accepts) =>
      fm.store.getAll(fm.classes.StorageNode).find((node) => node.get('name') === filename && accepts(node));
  const blobsBefore = new Map();
  findNode((node) => {
    blobsBefore.set(node, node.get('blobId'));
    return false;
  });
  const isUploaded = (node) => {
    const [blobId, size] = [node.get('blobId'), node.get('size')];
    return blobId && blobId !== blobsBefore.get(node) && (!size || size === file.size);
  };
  startUpload(fm, folder, file);
  try {
    return await poll(
        () => findNode(isUploaded), UPLOAD_POLL_ATTEMPTS, UPLOAD_POLL_INTERVAL_MS,
        `the upload of "${filename}" to finish`);
  } catch (error) {
    // The same file again may leave its record as it was.
    const same = valueOrNull(() => findNode((node) => node.get('blobId') && node.get('size') === file.size));
    if (!same) {
      throw error;
    }
    return same;
  }
};

// The URL of the file's share link.
const uploadAndShare = async (share) => {
  const {filename, letter} = share;
  const fm = application();
  if (!fm?.store || !fm.router || typeof fm.router.loadApp !== 'function') {
    throw new Error('FastMail internals not available');
  }
  await loadFilesModule(fm);
  // The module fetches its root a moment after it has loaded. What the store gives is an array, or a
  // collection that has a find() as arrays do.
  const myFiles = await pollQuickly(
      () => fm.store.getAll(fm.classes.StorageNode).find((node) => node.get('name') === 'My Files'),
      'the "My Files" root folder to sync');
  const node = await upload(fm, myFiles, share);
  await editorOf(letter);  // nothing is shared for a letter that has gone
  node.set('isSharedLinkEnabled', true);
  return pollQuickly(() => node.get('sharedLinkUrl'), `a share link to be generated for "${filename}"`);
};

const giveUp = async (share, error) => {
  const {filename} = share;
  log(`failed to auto-share "${filename}": ${error}`);
  findChip(share)?.remove();
  try {
    await addToBody(share);
  } catch (secondError) {
    log(`also could not write the error message into compose for "${filename}": ${secondError}`);
  }
  report('error', filename, String(error));
};

const handleOversizedFile = async (share) => {
  const {filename} = share;
  log(`processing oversized attachment: ${filename}`);
  try {
    showUploadingChip(share);
  } catch (error) {
    log(`could not show the uploading chip for "${filename}": ${error}`);
  }
  try {
    const url = await uploadAndShare(share);
    log(`uploaded and shared "${filename}": ${url}`);
    resolveChipToSuccess(share, url);
    await addToBody(share, url);
  } catch (error) {
    await giveUp(share, error);
    return;
  }
  log(`inserted share link for "${filename}" into the open compose`);
  report('success', filename);
};

// One file at a time, so that several refused ones don't race.
const enqueue = (filename, {file, compose}) => {
  const letter = {compose: compose ?? composeAround(), draft: null, isGone: false, seen: []};
  look(letter);
  openLetters.add(letter);
  shares = shares.then(() => handleOversizedFile({filename, file, letter, line: ''}))
               .finally(() => openLetters.delete(letter))
               .catch((error) => log(`"${filename}" was given up: ${error}`));
};

// --- The refusal. ---

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
  heading.textContent = 'Uploading via Fastmail Files';
  paragraph.textContent =
      `"${filename}" is too large to attach directly. Ondrel is uploading it to Fastmail ` +
      'Files and will add a share link to your email automatically.';
  enqueue(filename, recent);
};

new MutationObserver((records) => {
  openLetters.forEach(look);
  for (const modal of [...partialModals, ...addedElements(records, ALERT_SELECTOR)]) {
    judgeModal(modal);
  }
}).observe(document, {childList: true, subtree: true});

log(`script installed on ${location.href}`);
