// Turns the application's refusal of a large attachment into a share link. It keeps hold of the files that
// the user attaches, notices the "File too large" modal, uploads the file to the service's storage through
// the application's own objects, and writes the link into the message.

captureFiles();

new MutationObserver((records) => {
  openLetters.forEach(look);
  for (const modal of [...partialModals, ...addedElements(records, ALERT_SELECTOR)]) {
    judgeModal(modal);
  }
}).observe(document, {childList: true, subtree: true});

log(`script installed on ${location.href}`);
