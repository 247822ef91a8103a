// Tells the program that the message of this compose page is being sent.
(() => {
  'use strict';

  // Without a subject or recipient the application asks first, so the click alone doesn't mean that it sends.
  const isDraftReady = () => {
    try {
      const {subject, to} = FastMail.router.appController.draft;
      return typeof subject === 'string' && subject.trim() !== '' && Array.isArray(to) && to.length > 0;
    } catch {
      return false;
    }
  };

  // What the page tells from here on is told of this letter.
  const forgetTold = () => {
    const toasts = [...document.querySelectorAll('.v-Notification-message')];
    window._ondrelToldBefore = new WeakMap(toasts.map((toast) => [toast, toast.textContent]));
  };

  const notifySent = () => {
    if (isDraftReady()) {
      forgetTold();
      window.webkit.messageHandlers.ondrel.postMessage({type: 'sendClicked'});
    }
  };

  document.addEventListener('click', (event) => {
    if (event.target.closest?.('.s-send')) {
      notifySent();
    }
  }, true);

  const isSendDialog = (node) => node.nodeType === Node.ELEMENT_NODE &&
      (node.classList.contains('v-Compose-sendDialog') ||
       node.querySelector('.v-Compose-sendDialog') !== null);

  // A message sent by the keyboard shows this dialog without a click. One that was refused may be sent again.
  new MutationObserver((records) => {
    if (records.some(({addedNodes}) => [...addedNodes].some(isSendDialog))) {
      notifySent();
    }
  }).observe(document.documentElement, {childList: true, subtree: true});
})();
