// The messages that the application shows, as the program is told of them, and their highlights.

const TICK_MS = 300;

let containers = [];                 // in document order, as of the last tick
let currentAnchorsByContainer = [];  // anchors {id, exact, occurrenceIndex} by index in `containers`
let hostReadyPosted = false;
let lastReported = '';

const findContainers = () => [...document.querySelectorAll(CONTAINER_SELECTOR)];

const containerOf = (node) => containers.find((container) => container.contains(node));

const computeFocusedIndex = () =>
    containers.findIndex((container) => container.closest(CARD_SELECTOR)?.classList.contains(FOCUSED_CLASS));

// Takes highlights out of what the next reconcile paints.
const forget = (index, ids) => {
  if (currentAnchorsByContainer[index]) {
    currentAnchorsByContainer[index] =
        currentAnchorsByContainer[index].filter((anchor) => !ids.includes(anchor.id));
  }
};

const reconcile = (containerEl, anchors) => {
  const painter = anchors.length > 0 ? new Painter(containerEl) : null;
  const orphaned = anchors.filter((anchor) => !painter.applyAnchor(anchor));
  updateOrphanBanner(containerEl, orphaned.map(({id}) => id));
};

// Adds marks and never takes one away: that is for a click, or for the application's next drawing.
const reconcileAll = () => {
  mainObserver.disconnect();
  try {
    containers.forEach((containerEl, i) => reconcile(containerEl, currentAnchorsByContainer[i] ?? []));
  } finally {
    observe();
  }
};

const tick = () => {
  containers = findContainers();
  reconcileAll();
  const count = String(containers.length);
  const focused = computeFocusedIndex();
  const focusedIndex = focused < 0 ? '' : String(focused);
  if (`${count}, ${focusedIndex}` !== lastReported) {
    lastReported = `${count}, ${focusedIndex}`;
    post({type: 'ondrelHighlightContainersChanged', count, focusedIndex});
  }
  if (containers.length > 0 && !hostReadyPosted) {
    hostReadyPosted = true;
    post({type: 'ondrelHighlightHostReady'});
  }
};

const scheduleTick = throttle(tick, TICK_MS);

// Shown again as it was left: the program knows the page that was shown meanwhile.
window.addEventListener('pageshow', ({persisted}) => {
  if (persisted) {
    lastReported = '';
    hostReadyPosted = false;
    tick();
  }
});

const mainObserver = new MutationObserver(scheduleTick);
const observe = () =>
    mainObserver.observe(document.documentElement, {childList: true, subtree: true, characterData: true});

const isAnchor = (value) => typeof value?.id === 'string' && typeof value.exact === 'string' &&
    Number.isInteger(value.occurrenceIndex);
const listOf = (value) => Array.isArray(value) ? [...value] : [];

// The program's answer to a report: for each container all its highlights.
window.__ondrelApplyHighlights = (anchorsByContainer) => {
  currentAnchorsByContainer = listOf(anchorsByContainer).map((anchors) => listOf(anchors).filter(isAnchor));
  reconcileAll();
};
