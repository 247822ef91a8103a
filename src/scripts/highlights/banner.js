// The banner over a message some of whose highlights can't be found.

const BANNER_STYLE = {
  background: '#fff3cd',
  color: '#7a5b00',
  padding: '4px 8px',
  font: '12px system-ui,sans-serif',
  cursor: 'pointer',
  borderRadius: '4px',
  marginBottom: '6px',
};

const orphanIds = new WeakMap();  // banner -> ids

// Not that of a message inside, and none that mail has brought.
const bannerOf = (containerEl) => [...containerEl.querySelectorAll(`[${ORPHAN_ATTR}]`)].find(
    (banner) => orphanIds.has(banner) && banner.closest(CONTAINER_SELECTOR) === containerEl);

const clearOrphans = (containerEl, banner) => {
  const ids = orphanIds.get(banner);
  banner.remove();
  // Or the reconcile that follows the removal brings the banner back.
  forget(containerEl, (id) => ids.includes(id));
  const {containerIndex, report: number} = placeOf(containerEl);
  post({
    type: 'ondrelHighlightClearOrphaned',
    containerIndex,
    idsJSON: JSON.stringify(ids),
    report: number,
  });
};

const newBanner = (containerEl) => {
  const banner = styled('div', BANNER_STYLE);
  banner.setAttribute(ORPHAN_ATTR, '1');
  banner.addEventListener('click', (event) => {
    swallow(event);
    clearOrphans(containerEl, banner);
  });
  containerEl.prepend(banner);
  return banner;
};

const updateOrphanBanner = (containerEl, orphanedIds) => {
  const existing = bannerOf(containerEl);
  if (orphanedIds.length === 0) {
    existing?.remove();
    return;
  }
  const banner = existing ?? newBanner(containerEl);
  // The attribute is for the eye: an id may hold a comma, and a click must not clear another highlight.
  orphanIds.set(banner, orphanedIds);
  banner.setAttribute(ORPHAN_IDS_ATTR, orphanedIds.join(','));
  banner.textContent = filledIn(TEXTS.hiddenHighlights, orphanedIds.length);
};
