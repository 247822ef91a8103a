// Tells the program that a draft was discarded, or taken back. The application's toast is the only sign of
// it.

// The words between vary with the number of drafts.
const tellsOfDiscard = (text) => text.startsWith('Discarded') && text.includes('draft');

new MutationObserver((records) => {
  for (const {textContent} of addedElements(records, TOAST_SELECTOR)) {
    if (tellsOfDiscard(textContent.trim())) {
      forgetTold();
      post({type: 'discardClicked'});
    }
  }
}).observe(document.documentElement, {childList: true, subtree: true});

// The action of any toast: the program knows whether a discard is pending.
document.addEventListener('click', (event) => {
  if (event.target.closest?.(TOAST_ACTION_SELECTOR)) {
    post({type: 'discardUndone'});
  }
}, true);
