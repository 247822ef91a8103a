// What a page has before its scripts: a clock that stands still until it is moved, a record of all that is
// posted and logged, and words to write test cases with.
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

  // What a page and its frames have posted, "type" or "type: a, b" with the other fields' values, and logged.
  // A file can give its lines a shorter form, or none.
  window.record = window === top ? [] : top.record;
  window.shorten = (line) => line;
  window.told = () => record.splice(0).map((line) => shorten(line)).filter((line) => line !== null);
  console.log = (...values) => record.push(values.join(' '));
  const handler = window.webkit.messageHandlers.ondrel;
  const post = handler.postMessage.bind(handler);
  handler.postMessage = ({type, ...fields}) => {
    const values = Object.values(fields).map((value) => typeof value === 'string' ? value : 'NO STRING');
    record.push(type + (values.length > 0 ? `: ${values.join(', ')}` : ''));
  };
  window.handBackBridge = () => handler.postMessage = post;  // messages go to the program again

  // As a document that comes out of the engine's cache.
  window.comeBack = () => dispatchEvent(new PageTransitionEvent('pageshow', {persisted: true}));

  // A case: what `body` does and expects on a page with these page scripts, at this path, with this HTML and
  // that of its frame "/frame".
  const tests = [];
  window.test = (name, {scripts, html = '', path = '/page', frame = ''}, body) =>
      tests.push({name, scripts, html, path, frame, body});
  window.listTests = () => tests.map(({body, ...rest}) => rest);

  let failures = [];
  window.same = (actual, expected, what = '') => {
    const [is, shouldBe] = [actual, expected].map((value) => JSON.stringify(value, null, 1));
    if (is !== shouldBe) {
      failures.push(`${what}\nis ${is}\nand not ${shouldBe}`);
    }
  };
  // Moves the clock while real time passes.
  window.until = async (condition) => {
    for (let i = 0; !condition() && i < 400; ++i) {
      await fetch('/');
      await advance(50);
    }
    same(Boolean(condition()), true, condition);
  };
  // Does what the function says and expects the page to tell just this.
  window.tells = async (action, ...expected) => {
    await action();
    await settle();
    same(told(), expected, String(action));
  };
  window.run = async (body) => {
    failures = [];
    await settle();  // what the body does isn't part of the call that starts it
    try {
      await body();
    } catch (error) {
      failures.push(`threw ${error}\n${error.stack}`);
    }
    post({type: 'outcome', failures: failures.join('\n')});
  };
  window.runTest = (index) => run(tests[index].body);

  window.$ = (selector) => document.querySelector(selector);
  window.$$ = (selector) => [...document.querySelectorAll(selector)];
  window.element = (html) => {
    const holder = document.createElement('div');
    holder.innerHTML = html;
    return holder.firstElementChild;
  };
  window.show = (html) => document.body.append(element(html));
  window.key = (name, target = document.body, more = {}) =>
      target.dispatchEvent(new KeyboardEvent('keydown', {key: name, bubbles: true, ...more}));
  // Whether the event was taken from the page.
  window.press = (target, type, more = {}, Type = PointerEvent) =>
      !target.dispatchEvent(new Type(type, {bubbles: true, cancelable: true, ...more}));
  // Until a change of the selection is known everywhere.
  window.painted = (frame = window) =>
      new Promise((resolve) => requestAnimationFrame(resolve)).then(() => frame.settle());
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
})();
