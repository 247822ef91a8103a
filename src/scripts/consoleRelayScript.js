// Passes what the page writes to its console, and its uncaught errors, on to the program's log.

const textOf = (value) => typeof value === 'object' ? JSON.stringify(value) : String(value);

// Not guarded: an object that can't be written as JSON throws at the caller.
const relay = (level, values) => post({
  type: 'consoleLog',
  message: `[${level}] ${values.map(textOf).join(' ')}`,
});

for (const level of ['log', 'warn', 'error']) {
  const original = console[level];
  console[level] = function(...values) {
    relay(level, values);
    original.apply(this, values);
  };
}

window.onerror = (message, source, line, column, error) => {
  relay('onerror', [message, 'at', `${source}:${line}:${column}`, error]);
};

window.addEventListener('unhandledrejection', (event) => {
  relay('unhandledrejection', [String(event.reason)]);
});
