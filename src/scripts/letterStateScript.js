// Says in a word what has become of the letter on this page. It is evaluated again and again after the user
// has sent or discarded it, and its value is the answer:
//   absent   the application isn't here (another page, or one that is still loading)
//   asking   a box of the application waits for the user
//   failed   the application says that it didn't work
//   sent     the application says that it did
//   busy     it says that the letter is on its way, or the editor can't be used
//   gone     there is no editor any more
//   open     the editor can be used
(() => {
  'use strict';

  const {appController} = globalThis.FastMail?.router ?? {};
  if (!appController) {
    return 'absent';
  }

  const isShown = (element) => element.getClientRects().length > 0;
  const sendDialog = '.v-Compose-sendDialog';
  const isQuestion = (box) => isShown(box) && !box.closest(sendDialog) && !box.querySelector(sendDialog);
  const boxes = document.querySelectorAll('.v-Modal, [role="dialog"], [role="alertdialog"], dialog[open]');
  if ([...boxes].some(isQuestion)) {
    return 'asking';
  }

  // What was told before the letter was sent is of another one. The words of a toast are its only sign.
  const told = [...document.querySelectorAll('.v-Notification-message')]
                   .filter((toast) => window._ondrelToldBefore?.get(toast) !== toast.textContent)
                   .map((toast) => toast.textContent.trim());
  if (told.some((text) => /\b(not|unable|fail(ed|s)?|error|problem|offline)\b|n['’]t\b/i.test(text))) {
    return 'failed';
  }
  if (told.some((text) => /^sending\b|\b(will be|being) sent\b/i.test(text))) {
    return 'busy';
  }
  if (told.some((text) => /\b(sent|scheduled)\b/i.test(text))) {
    return 'sent';
  }

  const editor = document.querySelector('#compose, .v-Compose, [contenteditable="true"]');
  if (!editor || !appController.draft) {
    return 'gone';
  }
  return document.querySelector(sendDialog) || editor.closest('[inert]') ? 'busy' : 'open';
})();
