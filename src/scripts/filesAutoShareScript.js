// Turns the application's refusal of a large attachment into a share link. It keeps hold of the files that
// the user attaches, notices the "File too large" modal, uploads the file to the service's storage through
// the application's own objects, and writes the link into the message.
(() => {
  'use strict';

  if (window._ondrelFilesAutoShareInstalled) {
    return;
  }
  window._ondrelFilesAutoShareInstalled = true;

  const CAPTURE_TTL_MS = 30000;
  const CORRELATE_FRESHNESS_MS = 15000;
  const QUICK_POLL_ATTEMPTS = 40;
  const QUICK_POLL_INTERVAL_MS = 250;
  const UPLOAD_POLL_ATTEMPTS = 600;
  const UPLOAD_POLL_INTERVAL_MS = 1000;
  const TOO_LARGE_PREFIX = 'Cannot attach file ';
  const TOO_LARGE_INFIX = '. The total size of attached files cannot exceed ';
  const TOO_LARGE_SUFFIX = 'MB.';
  const RICH_EDITOR_SELECTOR = '[contenteditable="true"].v-RichText-input';
  const PLAIN_EDITOR_SELECTOR = 'textarea.v-TextInput-input';
  const CHIP_ATTRIBUTE = 'data-ondrel-files-chip';    // on a chip: the file's name
  const SHARE_ATTRIBUTE = 'data-ondrel-files-share';  // on a paragraph of the body: the file's name
  const SPINNER_STYLE_ID = 'ondrel-files-spinner-style';

  let recentFiles = [];                   // {name, file, capturedAt}, oldest first
  const plainTextShareLines = new Map();  // file name -> what was written into a plain-text body
  const queue = [];                       // {filename, file}
  let processing = false;
  const seenModals = new WeakSet();

  const log = (text) => console.log(`[Ondrel] files-auto-share: ${text}`);

  const report = (status, filename, reason) => window.webkit.messageHandlers.ondrel.postMessage({
    type: 'ondrelFilesAutoShare',
    status: status ?? '',
    filename: filename ?? '',
    reason: reason ?? '',
  });

  // --- Waiting. ---

  const wait = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));

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
      const value = valueOrNull(fn);
      if (value) {
        return value;
      }
      await wait(intervalMs);
    }
    throw new Error(`timed out waiting for ${description}`);
  };

  const pollQuickly = (fn, description) => poll(fn, QUICK_POLL_ATTEMPTS, QUICK_POLL_INTERVAL_MS, description);

  // --- The files that the user attaches, by whichever way. ---

  const isWithin = (limitMs) => ({capturedAt}) => Date.now() - capturedAt <= limitMs;

  const pruneRecentFiles = () => {
    recentFiles = recentFiles.filter(isWithin(CAPTURE_TTL_MS));
  };

  const capture = (files, source) => {
    for (const file of files) {
      recentFiles.push({name: file.name, file, capturedAt: Date.now()});
      log(`captured file via ${source}: ${file.name} (${file.size} bytes)`);
    }
    pruneRecentFiles();
  };

  // Takes the newest capture of that name out of the list; null if there is none that is fresh enough.
  const takeRecentFile = (name) => {
    pruneRecentFiles();
    const isFresh = isWithin(CORRELATE_FRESHNESS_MS);
    const index = recentFiles.findLastIndex((record) => record.name === name && isFresh(record));
    return index < 0 ? null : recentFiles.splice(index, 1)[0].file;
  };

  document.addEventListener('change', ({target}) => capture(target.files ?? [], 'change'), true);
  document.addEventListener('drop', ({dataTransfer}) => capture(dataTransfer?.files ?? [], 'drop'), true);
  document.addEventListener('paste', ({clipboardData}) => capture(clipboardData?.files ?? [], 'paste'), true);

  // --- The chip: looks like an attachment of the application, but is made of plain elements. A copied
  // progress element of the application would grow over the whole page. ---

  const element = (tag, className, ...children) => {
    const made = document.createElement(tag);
    if (className) {
      made.className = className;
    }
    made.append(...children);
    return made;
  };

  const svgElement = (tag, attributes, ...children) => {
    const made = document.createElementNS('http://www.w3.org/2000/svg', tag);
    for (const [name, value] of Object.entries(attributes)) {
      made.setAttribute(name, value);
    }
    made.append(...children);
    return made;
  };

  const paperclipIcon = () => svgElement(
      'svg', {
        viewBox: '0 0 24 24',
        class: 'u-standardicon v-Icon i-attachment u-sq-20 u-ml-2',
        role: 'presentation',
      },
      svgElement('path', {
        d: 'M9.42,13l6.23-6.19c1.13-1.13,2.22-1.2,3-.43.61.61,1.08,1.74-.22,3l-7.94,7.89a3.36,3.36,0,0,1-4.75,0h0' +
            'a3.33,3.33,0,0,1,0-4.72l6.84-6.8',
      }));

  const removeIcon = () => svgElement(
      'svg', {
        viewBox: '0 0 24 24',
        fill: 'none',
        stroke: 'currentColor',
        'stroke-linecap': 'round',
        'stroke-linejoin': 'round',
        'stroke-width': '1.5',
        role: 'presentation',
        class: 'v-Icon i-cancel',
      },
      svgElement('line', {x1: 16, y1: 8, x2: 8, y2: 16}), svgElement('line', {x1: 8, y1: 8, x2: 16, y2: 16}));

  const addSpinnerStyle = () => {
    if (document.getElementById(SPINNER_STYLE_ID)) {
      return;
    }
    const style = element(
        'style', '',
        '@keyframes ondrelFilesSpin { to { transform: rotate(360deg); } } ' +
            '.ondrel-files-spinner { display: inline-block; width: 9px; height: 9px; margin-right: 5px; ' +
            'border: 1.5px solid rgba(0,0,0,0.18); border-top-color: rgba(0,0,0,0.55); border-radius: 50%; ' +
            'animation: ondrelFilesSpin 0.8s linear infinite; vertical-align: middle; }');
    style.id = SPINNER_STYLE_ID;
    document.head.append(style);
  };

  const buildChip = (filename) => {
    addSpinnerStyle();
    const removeButton = element('button', 'v-Button v-ComposeAttachment-remove', removeIcon());
    removeButton.type = 'button';
    removeButton.style.visibility = 'hidden';
    const row = element(
        'div', 'u-flex u-relative u-items-center', paperclipIcon(),
        element('span', 'v-ComposeAttachment-label', filename),
        element(
            'p', 'v-ComposeAttachment-size', element('span', 'ondrel-files-spinner'),
            'Uploading via Fastmail Files…'),
        element('span', 'v-ComposeAttachment-divider'), removeButton);
    const chip = element('div', 'v-ComposeAttachment', row);
    chip.setAttribute(CHIP_ATTRIBUTE, filename);
    return chip;
  };

  // By comparison and not by a selector: a name may hold anything.
  const findMarked = (root, attribute, filename) => [...root.querySelectorAll(`[${attribute}]`)].find(
      (marked) => marked.getAttribute(attribute) === filename);

  const findChip = (filename) => findMarked(document, CHIP_ATTRIBUTE, filename);

  // The row of attachments is there from the moment when compose opens, hidden while it is empty.
  const findAttachmentListContainer = () => (document.querySelector('.v-Compose') ?? document)
                                                .querySelector('.u-flex.u-flex-wrap.u-m-0.u-hideifempty');

  const showUploadingChip = (filename) => {
    const container = findAttachmentListContainer();
    if (!container) {
      throw new Error('could not find the attachment chip row');
    }
    if (!findChip(filename)) {
      container.append(buildChip(filename));
    }
  };

  const shareLink = (className, filename, url) => {
    const link = element('a', className, filename);
    link.setAttribute('href', url);
    return link;
  };

  const resolveChipToSuccess = (filename, url) => {
    const chip = findChip(filename);
    if (!chip) {
      return;
    }
    const label = shareLink('v-ComposeAttachment-label', filename, url);
    label.target = '_blank';
    label.rel = 'noopener';
    chip.querySelector('.v-ComposeAttachment-label').replaceWith(label);
    chip.querySelector('.v-ComposeAttachment-size').textContent = 'via Fastmail Files';
    const removeButton = chip.querySelector('.v-ComposeAttachment-remove');
    removeButton.style.visibility = '';
    removeButton.addEventListener('click', (event) => {
      event.preventDefault();
      chip.remove();
      removeBodyShareBlock(filename);
      log(`removed the Fastmail Files share for "${filename}"`);
    });
  };

  // --- The message's body. The chip isn't part of the message, so the link stands here as well. ---

  const richEditor = () => document.querySelector(RICH_EDITOR_SELECTOR);
  const plainEditor = () => document.querySelector(PLAIN_EDITOR_SELECTOR);
  const sendInput = (editor) => editor.dispatchEvent(new Event('input', {bubbles: true}));

  const errorText = (filename) => `Could not share "${filename}" via Fastmail Files — attach it manually.`;

  const {set: setNativeValue} = Object.getOwnPropertyDescriptor(HTMLTextAreaElement.prototype, 'value');

  // By the native setter, so that the application's framework sees a change.
  const setPlainValue = (textarea, value) => {
    setNativeValue.call(textarea, value);
    sendInput(textarea);
  };

  const appendToRichBody = (editor, filename, phase, url) => {
    const paragraph = element('p', '');
    if (phase === 'success') {
      paragraph.setAttribute(SHARE_ATTRIBUTE, filename);
      paragraph.append('Shared via Fastmail Files: ', shareLink('', filename, url));
    } else {
      paragraph.append(errorText(filename));
    }
    const quote = editor.querySelector('blockquote');
    if (quote) {
      quote.before(paragraph);
    } else {
      editor.append(paragraph);
    }
    sendInput(editor);
  };

  const appendToPlainBody = (textarea, filename, phase, url) => {
    const line =
        phase === 'success' ? `Shared via Fastmail Files: ${filename} - ${url}` : errorText(filename);
    if (phase === 'success') {
      plainTextShareLines.set(filename, line);
    }
    const lines = textarea.value.split('\n');
    const quoteStart = lines.findIndex((candidate) => candidate.startsWith('>'));
    const headEnd = quoteStart < 0 ? lines.length : quoteStart;
    const head = lines.slice(0, headEnd).join('\n');
    const rest = lines.slice(headEnd).join('\n');
    setPlainValue(textarea, `${head}${head === '' ? '' : '\n\n'}${line}${rest === '' ? '' : `\n${rest}`}`);
  };

  const appendBodyContent = async (filename, phase, url) => {
    const editor = await pollQuickly(() => richEditor() ?? plainEditor(), 'the compose editor to be present');
    const append = editor.matches(RICH_EDITOR_SELECTOR) ? appendToRichBody : appendToPlainBody;
    append(editor, filename, phase, url);
  };

  // Deletes the first place where the text stands on lines of its own: one line, or several if the file's
  // name has line breaks in it. What the user has changed is the user's.
  const removeLines = (textarea, text) => {
    const lines = textarea.value.split('\n');
    const wanted = text.split(/\r\n|\r|\n/);
    const index = lines.findIndex((_, i) => wanted.every((line, j) => lines[i + j] === line));
    if (index >= 0) {
      lines.splice(index, wanted.length);
      setPlainValue(textarea, lines.join('\n'));
    }
  };

  const removeBodyShareBlock = (filename) => {
    const editor = richEditor();
    const block = editor && findMarked(editor, SHARE_ATTRIBUTE, filename);
    if (block) {
      block.remove();
      sendInput(editor);
      return;
    }
    const textarea = plainEditor();
    const line = plainTextShareLines.get(filename);
    if (textarea && line !== undefined) {
      removeLines(textarea, line);
    }
    plainTextShareLines.delete(filename);
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

  // The URL of the file's share link.
  const uploadAndShare = async (filename, file) => {
    const fm = window.FastMail;
    if (!fm?.store || !fm.router || typeof fm.router.loadApp !== 'function') {
      throw new Error('FastMail internals not available');
    }
    await loadFilesModule(fm);
    const nodes = () => Array.from(fm.store.getAll(fm.classes.StorageNode));
    // The module fetches its root a moment after it has loaded.
    const myFiles = await pollQuickly(
        () => nodes().find((node) => node.get('name') === 'My Files'), 'the "My Files" root folder to sync');
    startUpload(fm, myFiles, file);
    const node = await poll(
        () => nodes().find((candidate) => candidate.get('name') === filename && candidate.get('blobId')),
        UPLOAD_POLL_ATTEMPTS, UPLOAD_POLL_INTERVAL_MS, `the upload of "${filename}" to finish`);
    node.set('isSharedLinkEnabled', true);
    return pollQuickly(() => node.get('sharedLinkUrl'), `a share link to be generated for "${filename}"`);
  };

  const giveUp = async (filename, error) => {
    log(`failed to auto-share "${filename}": ${error}`);
    findChip(filename)?.remove();
    try {
      await appendBodyContent(filename, 'error');
    } catch (secondError) {
      log(`also could not write the error message into compose for "${filename}": ${secondError}`);
    }
    report('error', filename, String(error));
  };

  const handleOversizedFile = async (filename, file) => {
    log(`processing oversized attachment: ${filename}`);
    try {
      showUploadingChip(filename);
    } catch (error) {
      log(`could not show the uploading chip for "${filename}": ${error}`);
    }
    try {
      const url = await uploadAndShare(filename, file);
      log(`uploaded and shared "${filename}": ${url}`);
      resolveChipToSuccess(filename, url);
      await appendBodyContent(filename, 'success', url);
    } catch (error) {
      await giveUp(filename, error);
      return;
    }
    log(`inserted share link for "${filename}" into the open compose`);
    report('success', filename);
  };

  // One file at a time, so that several refused ones don't race.
  const processQueue = async () => {
    if (processing || queue.length === 0) {
      return;
    }
    processing = true;
    const {filename, file} = queue.shift();
    try {
      await handleOversizedFile(filename, file);
    } finally {
      processing = false;
      processQueue();
    }
  };

  const enqueue = (filename, file) => {
    queue.push({filename, file});
    processQueue();
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
    const paragraph = modal.querySelector('p.u-trim');
    if (seenModals.has(modal) || !heading || !paragraph) {
      return;  // one that isn't complete is looked at again
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
    const file = takeRecentFile(filename);
    if (!file) {
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
    enqueue(filename, file);
  };

  new MutationObserver(() => {
    for (const modal of document.querySelectorAll('div[role="alertdialog"].u-modal')) {
      judgeModal(modal);
    }
  }).observe(document.documentElement, {childList: true, subtree: true});

  log(`script installed on ${location.href}`);
})();
