// Tells the program which link the pointer is over.

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
  post({type: 'mouseover', href: linkString});
}, true);
