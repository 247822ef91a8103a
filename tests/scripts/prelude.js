// What the tests put into a page before its scripts: a clock that stands still until the test moves it, and a
// console that keeps what it is told.
(() => {
  'use strict';

  let now = 1700000000000;
  let lastId = 0;
  const timers = new Map();  // id -> {at, every, action}

  const add = (action, delay, every) => {
    timers.set(++lastId, {at: now + Math.max(0, delay || 0), every, action});
    return lastId;
  };
  const remove = (id) => timers.delete(id);
  window.setTimeout = (action, delay, ...args) => add(() => action(...args), delay, null);
  window.setInterval = (action, delay, ...args) => add(() => action(...args), delay, Math.max(1, delay));
  window.clearTimeout = remove;
  window.clearInterval = remove;
  Date.now = () => now;
  performance.now = () => now;

  // Until all that is waiting for nothing but its turn has run.
  const channel = new MessageChannel();
  window.settle = () => new Promise((resolve) => {
    channel.port1.onmessage = resolve;
    channel.port2.postMessage(0);
  });

  window.advance = async (milliseconds) => {
    const end = now + milliseconds;
    for (;;) {
      await settle();
      const [next] = [...timers].sort(([a, x], [b, y]) => x.at - y.at || a - b);
      if (!next || next[1].at > end) {
        break;
      }
      const [id, timer] = next;
      now = timer.at;
      timer.every ? timer.at += timer.every : timers.delete(id);
      timer.action();
    }
    now = end;
    await settle();
  };

  window.logged = [];
  console.log = (...values) => logged.push(values.join(' '));

  window.element = (html) => {
    const holder = document.createElement('div');
    holder.innerHTML = html;
    return holder.firstElementChild;
  };
  // Gives a textarea its text and then a property of its own, as frameworks do to hear of changes: only the
  // native setter passes.
  window.ownValue = (textarea, text) => {
    delete textarea.value;
    textarea.value = text;
    const {get} = Object.getOwnPropertyDescriptor(HTMLTextAreaElement.prototype, 'value');
    Object.defineProperty(textarea, 'value', {
      configurable: true,
      get,
      set() {
        throw new Error('set past the framework');
      },
    });
  };
  window.$ = (selector) => document.querySelector(selector);
  window.key = (name, target = document.body, more = {}) =>
      target.dispatchEvent(new KeyboardEvent('keydown', {key: name, bubbles: true, ...more}));
})();
