// Reduces a compose page to its editor.
(() => {
  'use strict';

  const ICONS =
      ['i-expand', 'i-close', 'i-sidebar'];  // of the buttons that make no sense in a window of its own

  const removeChrome = (root) => {
    for (const icon of ICONS) {
      for (const svg of root.querySelectorAll(`svg[class*="${icon}"]`)) {
        svg.closest('button')?.remove();
      }
    }
    for (const element of root.querySelectorAll('[class*="v-ContextualSidebar"]')) {
      element.remove();
    }
  };

  // True once the editor is there and stands alone.
  const cleanUI = () => {
    const compose = document.getElementById('compose');
    if (!compose) {
      return false;
    }
    document.body.replaceChildren(compose);
    removeChrome(compose);
    // The application renders its buttons later than the editor, and again at times.
    new MutationObserver(() => removeChrome(compose)).observe(compose, {childList: true, subtree: true});
    return true;
  };

  const observer = new MutationObserver(() => {
    if (cleanUI()) {
      observer.disconnect();
    }
  });
  observer.observe(document.documentElement, {childList: true, subtree: true});
  // The observer stays on whatever comes of this: it goes over the page once more when the editor has been
  // moved.
  cleanUI();
})();
