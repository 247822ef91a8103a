// What the application tells of letters: the words of its toasts are the only sign.

const toasts = () => [...document.querySelectorAll(TOAST_SELECTOR)];

// What the page tells from here on is told of the letter that is sent or discarded now.
const forgetTold = () => {
  window._ondrelToldBefore = new WeakMap(toasts().map((toast) => [toast, toast.textContent]));
};

// What was told before is of another letter.
const told = () => toasts()
                       .filter((toast) => window._ondrelToldBefore?.get(toast) !== toast.textContent)
                       .map((toast) => toast.textContent.trim());
