// The swap that waits for the quote of the application's. A quote is replaced that the application put into
// an editor for this reply; one of another letter, or that came with what the user wrote or pasted, is the
// user's.

const FRESHNESS_MS = 30000;

let pendingSwap = null;     // {content, text, capturedAt, otherEditors, quote}
let richSwapArmed = false;  // a rich-text swap is scheduled
let edits = 0;              // of the user, in any editor
let isSendingInput = false;

const log = logger('reply-with-selection: ');
const logFailure = logger('reply-with-selection ');

const endSwap = (swap) => {
  if (pendingSwap === swap) {
    pendingSwap = null;
  }
};

const attempt = (what, swap, action) => {
  try {
    action();
  } catch (error) {
    logFailure(`${what} failed: ${error}`);
    richSwapArmed = false;
    endSwap(swap);
  }
};

const isStale = ({capturedAt}) => Date.now() - capturedAt > FRESHNESS_MS;

const sendOwnInput = (editor) => {
  isSendingInput = true;
  sendInput(editor);
  isSendingInput = false;
};

const replyEditors = (swap, selector) => [...document.querySelectorAll(selector)].filter(
    (editor) => !swap.otherEditors.has(editor));

const onEdit = ({target}) => {
  if (isSendingInput || !target.closest?.(EDITOR_SELECTOR)) {
    return;
  }
  ++edits;
  if (pendingSwap && !pendingSwap.quote) {
    log('pending swap ended, the user writes and there is no quote yet');
    pendingSwap = null;
  }
};
