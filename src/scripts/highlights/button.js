// The button over a selection.

const SELECTION_DEBOUNCE_MS = 150;
const BUTTON_STYLE = {
  position: 'fixed',
  zIndex: '2147483647',
  background: '#222',
  color: '#fff',
  font: '12px system-ui,sans-serif',
  padding: '4px 10px',
  borderRadius: '6px',
  cursor: 'pointer',
  boxShadow: '0 2px 6px rgba(0,0,0,.3)',
  userSelect: 'none',
  webkitUserSelect: 'none',
};

let btn = null;
let offered = null;  // {containerEl, range} while there is a button
let selectionDebounce = null;

const hideButton = () => {
  btn?.remove();
  btn = null;
  offered = null;
};

const placeButton = ({left, top, width}) => {
  btn.style.left = `${Math.max(4, left + width / 2 - 40)}px`;
  btn.style.top = `${Math.max(4, top - 32)}px`;
};

const showButton = ({containerEl, range}) => {
  hideButton();
  offered = {containerEl, range: range.cloneRange()};
  btn = styled('div', BUTTON_STYLE);
  btn.setAttribute('role', 'button');
  btn.textContent = TEXTS.highlight;
  placeButton(range.getBoundingClientRect());
  const take = (event) => {
    swallow(event);  // or the press takes the selection away first
    if (offered) {
      createHighlight(offered);
    }
  };
  btn.addEventListener('mousedown', take);
  btn.addEventListener('click', take);  // without a pointer there was no press
  document.body.append(btn);
};

const followSelection = () => {
  const selected = findSelected();
  if (selected) {
    showButton(selected);
  } else {
    hideButton();
  }
};

// With its text, until that is out of sight.
const followText = () => {
  if (!offered) {
    return;
  }
  const rect = offered.range.getBoundingClientRect();
  if (isInSight(rect, offered.containerEl)) {
    placeButton(rect);
  } else {
    hideButton();
  }
};

const hideButtonWithText = () => {
  if (offered && !isShown(offered.range.getBoundingClientRect())) {
    hideButton();
  }
};

const offerButton = () => {
  document.addEventListener('selectionchange', () => {
    clearTimeout(selectionDebounce);
    selectionDebounce = setTimeout(followSelection, SELECTION_DEBOUNCE_MS);
  });
  document.addEventListener('mousedown', ({target}) => {
    if (btn && target !== btn) {
      hideButton();
    }
  }, true);
  window.addEventListener('scroll', followText, {capture: true, passive: true});
  window.addEventListener('resize', followText);
};
