// Paints what is known of each message whenever the document has changed.

const TICK_MS = 300;

const reconcile = (containerEl) => {
  const anchors = anchorsOf(containerEl);
  const painter = anchors.length > 0 ? new Painter(containerEl) : null;
  const orphaned = anchors.filter((anchor) => !painter.applyAnchor(anchor));
  updateOrphanBanner(containerEl, orphaned.map(({id}) => id));
};

// Without a tick for what the script itself changes.
const unobserved = (action) => {
  if (mainObserver.takeRecords().length > 0) {
    scheduleTick();
  }
  mainObserver.disconnect();
  try {
    action();
  } finally {
    observe();
  }
};

// Adds marks and never takes one away.
const reconcileAll = () =>
    unobserved(() => containers.filter((containerEl) => containerEl.isConnected).forEach(reconcile));

const tick = () => {
  look();
  reconcileAll();
  hideButtonWithText();
};

// While the document goes on changing, a tick still runs.
const scheduleTick = throttle(tick, TICK_MS);

const mainObserver = new MutationObserver(scheduleTick);
const observe = () =>
    mainObserver.observe(document.documentElement, {childList: true, subtree: true, characterData: true});

const followPage = () => {
  observe();
  // Shown again as it was left.
  window.addEventListener('pageshow', ({persisted}) => {
    if (persisted) {
      lookAgain();
      tick();
    }
  });
  window.addEventListener(CARDS_EVENT, tick);
  tick();
};
