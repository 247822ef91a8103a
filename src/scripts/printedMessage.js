// Prints the open conversation without the application around it, and takes that back: what the screen shows
// stays as it is. True when the paper is ours. A page that brings a style for paper of its own knows better.

const PRINT_ATTR = 'data-ondrel-print';
const STYLE_KEY = '_ondrelPrint';
const HEIGHT_PROPERTY = '--ondrel-print-height';

const marked = (role) => `[${PRINT_ATTR}="${role}"]`;
const ANY = `[${PRINT_ATTR}]`;

const STYLE = `
@media not print {
  ${marked('subject')} { display: none; }
}
@media print {
  ${marked('way')} {
    display: block !important; position: static !important; float: none !important; contain: none !important;
    width: auto !important; min-width: 0 !important; max-width: none !important;
    height: auto !important; min-height: 0 !important; max-height: none !important;
    margin: 0 !important; padding: 0 !important; border: 0 !important;
    overflow: visible !important; transform: none !important; background: none !important;
  }
  ${marked('way')} > :not(${ANY}) { display: none !important; }
  ${marked('subject')} { font: bold 1.4em system-ui, sans-serif; color: #000; margin: 0 0 0.8em; }
  ${marked('message')} {
    position: static !important; overflow: visible !important;
    height: auto !important; max-height: none !important; box-shadow: none !important;
  }
  ${marked('message')} :is(button, [role="button"], [role="toolbar"], input, select) {
    display: none !important;
  }
  ${marked('folded')} {
    border: 0 !important; background: none !important; color: #000 !important; text-align: center;
  }
  ${marked('message')} header { break-after: avoid; break-inside: avoid; }
  ${marked('message')} pre { white-space: pre-wrap; }
  ${marked('message')} :is(img, table, pre) { max-width: 100%; }
  ${marked('message')} iframe { height: var(${HEIGHT_PROPERTY}) !important; }
}`;

const restore = () => {
  document.adoptedStyleSheets = [...document.adoptedStyleSheets].filter((sheet) => !sheet[STYLE_KEY]);
  document.querySelectorAll(marked('subject')).forEach((element) => element.remove());
  document.querySelectorAll(ANY).forEach((element) => element.removeAttribute(PRINT_ATTR));
  document.querySelectorAll('iframe').forEach(({style}) => style.removeProperty(HEIGHT_PROPERTY));
};

const isForPaper = (media) => /\bprint\b/.test(media?.mediaText ?? '');
const holdsPaperRules = (rules) => [...rules].some(
    (rule) => isForPaper(rule.media) || (rule.cssRules && holdsPaperRules(rule.cssRules)));
const bringsStyle = () => [...document.styleSheets].some((sheet) => {
  try {
    return isForPaper(sheet.media) || holdsPaperRules(sheet.cssRules);
  } catch {
    return false;  // another origin's
  }
});

const isShown = (element) => element.getClientRects().length > 0;
// What is in no other of them.
const outermost = (elements) =>
    elements.filter((element) => !elements.some((other) => other !== element && other.contains(element)));
const messages = () => {
  const cards = [...document.querySelectorAll(CARD_SELECTOR)].filter(isShown);
  return outermost(
      cards.length > 0 ? cards : [...document.querySelectorAll(CONTAINER_SELECTOR)].filter(isShown));
};

// A frame shows on paper what it shows on the screen; of those that can be looked into, all of it.
const openFrames = (message) => message.querySelectorAll('iframe').forEach((frame) => {
  try {
    const {scrollHeight} = frame.contentDocument.documentElement;
    frame.style.setProperty(HEIGHT_PROPERTY, `${Math.max(scrollHeight, frame.offsetHeight)}px`);
  } catch {
    frame.style.setProperty(HEIGHT_PROPERTY, `${frame.offsetHeight}px`);
  }
});

const mark = (message) => {
  message.setAttribute(PRINT_ATTR, 'message');
  openFrames(message);
  for (let around = message.parentElement; around; around = around.parentElement) {
    around.setAttribute(PRINT_ATTR, 'way');
    if (around === document.body) {
      break;
    }
  }
};

const addSubject = () => {
  const subject = appController()?.message?.get?.('subject') || document.title;
  const element = document.createElement('h1');
  element.setAttribute(PRINT_ATTR, 'subject');
  element.textContent = subject;
  document.body.prepend(element);
};

// Not as an element, which the page's policy may forbid.
const addStyle = () => {
  const style = new CSSStyleSheet();
  style.replaceSync(STYLE);
  style[STYLE_KEY] = true;
  document.adoptedStyleSheets = [...document.adoptedStyleSheets, style];
};

restore();
if (!isPrinted || document.querySelector(LETTER_SELECTOR) || bringsStyle()) {
  return false;
}
const shown = messages();
if (shown.length === 0) {
  return false;
}
shown.forEach(mark);
// Those that stay folded are missing on paper too; their number tells of them.
document.querySelectorAll(SHOW_MORE_SELECTOR).forEach((button) => button.setAttribute(PRINT_ATTR, 'folded'));
addSubject();
addStyle();
return true;
