// Says in a word what has become of the letter on this page. It is evaluated again and again after the user
// has sent or discarded it, and its value is the answer:
//   absent   the application isn't here (another page, or one that is still loading)
//   asking   a box of the application waits for the user
//   failed   the application says that it didn't work
//   sent     the application says that it did
//   busy     it says that the letter is on its way, or the editor can't be used
//   gone     there is no editor any more
//   open     the editor can be used

const controller = appController();
if (!controller) {
  return 'absent';
}

const isShown = (element) => element.getClientRects().length > 0;
const isQuestion = (box) =>
    isShown(box) && !box.closest(SEND_DIALOG_SELECTOR) && !box.querySelector(SEND_DIALOG_SELECTOR);
if ([...document.querySelectorAll(BOX_SELECTOR)].some(isQuestion)) {
  return 'asking';
}

const isTold = (words) => told().some((text) => words.test(text));
if (isTold(/\b(not|unable|fail(ed|s)?|error|problem|offline)\b|n['’]t\b/i)) {
  return 'failed';
}
if (isTold(/^sending\b|\b(will be|being) sent\b/i)) {
  return 'busy';
}
if (isTold(/\b(sent|scheduled)\b/i)) {
  return 'sent';
}

const editor = document.querySelector(`${LETTER_SELECTOR}, [contenteditable="true"]`);
if (!editor || !controller.draft) {
  return 'gone';
}
return document.querySelector(SEND_DIALOG_SELECTOR) || editor.closest('[inert]') ? 'busy' : 'open';
