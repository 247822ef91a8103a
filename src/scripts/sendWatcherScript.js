// Tells the program that the message of this compose page is being sent.

// Without a subject or recipient the application asks first, so the click alone doesn't mean that it sends.
const isDraftReady = () => {
  try {
    const {subject, to} = appController().draft;
    return typeof subject === 'string' && subject.trim() !== '' && Array.isArray(to) && to.length > 0;
  } catch {
    return false;
  }
};

const notifySent = () => {
  if (isDraftReady()) {
    forgetTold();
    post({type: 'sendClicked'});
  }
};

document.addEventListener('click', (event) => {
  if (event.target.closest?.(SEND_SELECTOR)) {
    notifySent();
  }
}, true);

// A message sent by the keyboard shows this dialog without a click. One that was refused may be sent again.
new MutationObserver((records) => {
  if (addedElements(records, SEND_DIALOG_SELECTOR).length > 0) {
    notifySent();
  }
}).observe(document.documentElement, {childList: true, subtree: true});
