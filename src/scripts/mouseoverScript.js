// Tells the program which link the pointer is over.
(() => {
  'use strict';

  if (window._ondrelMouseoverInstalled) {
    return;
  }
  window._ondrelMouseoverInstalled = true;

  const REPEAT_MS = 50;  // the same link isn't told again within this time

  let _lastHover = 0;
  let _lastLink = null;

  document.addEventListener('mouseover', (event) => {
    const linkString = event.target.closest?.('a')?.toString() ?? '';
    const now = Date.now();
    if (linkString === _lastLink && now - _lastHover < REPEAT_MS) {
      return;
    }
    _lastHover = now;
    _lastLink = linkString;
    try {
      window.webkit.messageHandlers.ondrel.postMessage({type: 'mouseover', href: linkString});
    } catch {
      // A lost hover text is no reason to disturb the page.
    }
  }, true);
})();
