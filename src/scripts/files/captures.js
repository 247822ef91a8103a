// The files that the user attaches, by whichever way.

const CAPTURE_TTL_MS = 30000;
const CORRELATE_FRESHNESS_MS = 15000;

let recentFiles = [];  // {name, file, compose, capturedAt}, oldest first

const isWithin = (limitMs) => ({capturedAt}) => Date.now() - capturedAt <= limitMs;

const capture = (files, source, target) => {
  for (const file of files ?? []) {
    recentFiles.push({name: file.name, file, compose: composeAround(target), capturedAt: Date.now()});
    log(`captured file via ${source}: ${file.name} (${file.size} bytes)`);
  }
  recentFiles = recentFiles.filter(isWithin(CAPTURE_TTL_MS));
};

// Takes the newest capture of that name out of the list; none if there is none that is fresh enough.
const takeRecentFile = (name) => {
  const isFresh = isWithin(CORRELATE_FRESHNESS_MS);
  const index = recentFiles.findLastIndex((record) => record.name === name && isFresh(record));
  return index < 0 ? undefined : recentFiles.splice(index, 1)[0];
};

const captureFiles = () => {
  document.addEventListener('change', ({target}) => capture(target.files, 'change', target), true);
  document.addEventListener(
      'drop', ({target, dataTransfer}) => capture(dataTransfer?.files, 'drop', target), true);
  document.addEventListener(
      'paste', ({target, clipboardData}) => capture(clipboardData?.files, 'paste', target), true);
};
