// Tells the program that a draft was discarded, or taken back. The application's toast is the only sign of
// it.
(() => {
  'use strict';

  const post = (type) => window.webkit.messageHandlers.ondrel.postMessage({type});

  // What the page tells from here on is told of this draft.
  const forgetTold = () => {
    const toasts = [...document.querySelectorAll('.v-Notification-message')];
    window._ondrelToldBefore = new WeakMap(toasts.map((toast) => [toast, toast.textContent]));
  };

  // The words between vary with the number of drafts.
  const tellsOfDiscard = (text) => text.startsWith('Discarded') && text.includes('draft');

  new MutationObserver((records) => {
    for (const {addedNodes} of records) {
      for (const node of addedNodes) {
        if (node.nodeType !== Node.ELEMENT_NODE) {
          continue;
        }
        const toast = node.classList.contains('v-Notification-message') ?
            node :
            node.querySelector('.v-Notification-message');
        if (toast && tellsOfDiscard(toast.textContent.trim())) {
          forgetTold();
          post('discardClicked');
        }
      }
    }
  }).observe(document.documentElement, {childList: true, subtree: true});

  // The action of any toast: the program knows whether a discard is pending.
  document.addEventListener('click', (event) => {
    if (event.target.closest?.('.v-Notification-action')) {
      post('discardUndone');
    }
  }, true);
})();
