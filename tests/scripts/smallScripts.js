// The scripts of ordinary tabs that are a few lines each.
{
  const router = {app: 'mail', title: '', appController: {message: null}};
  const messageOf = (subject, id) => ({get: (name) => name === 'subject' ? subject : null, id: () => id});
  const polls = (change, ...expected) => tells(() => advance(500, change()), ...expected);

  test('The title follows the message, then the router', {scripts: ['titlePollScript']}, async () => {
    await tells(() => advance(999), 'Failed to grab the email subject');  // still loading
    await advance(1, window.FastMail = {router});
    const open = (message) => router.appController.message = message;
    const first = messageOf('A', 'M1');
    await polls(() => router.title = 'Inbox', 'titleChange: Inbox');
    await polls(() => {});
    await polls(() => open(first), 'titleChange: A', 'ondrelMessageChanged: M1');
    await polls(() => open(null, router.title = ''));  // the window keeps its title
    await polls(() => open(first), 'ondrelMessageChanged: M1');
    await polls(() => open(messageOf('A', 'M2')), 'ondrelMessageChanged: M2');
    await polls(() => open({get: () => 'B'}), 'titleChange: B');
    await polls(() => open(messageOf('C', 'M3')), 'titleChange: C', 'ondrelMessageChanged: M3');
    await polls(comeBack, 'titleChange: C', 'ondrelMessageChanged: M3');
  });

  test('A letter that is being written is told', {scripts: ['titlePollScript']}, async () => {
    window.FastMail = {router};
    const {appController} = router;
    const changed = (isWriting) => `ondrelWritingChanged: ${isWriting}`;
    await polls(() => {});
    await polls(() => appController.draft = {to: []}, changed('true'));
    await polls(() => [show('<p class=v-Compose></p>'), appController.draft = null]);
    await polls(() => $('.v-Compose').remove(), changed('false'));
    await polls(() => show('<p id=compose></p>'), changed('true'));
    await polls(() => dispatchEvent(new Event('pageshow')), changed('true'));  // out of the page cache
    await polls(() => [show('<p id=s-settings-notifications></p>'), router.app = 'settings']);
    same($('#s-settings-notifications').style.pointerEvents, 'none');
  });

  const links = {
    scripts: ['mouseoverScript', 'mouseoverScript'],  // injected twice, it works once
    html:
        `<a id=one href='https://one.example/?a=1&b=2'><b id=in>x</b></a><a id=two href='mailto:a@b.example'>y</a>
           <p id=out>z</p>`,
  };
  test('The hovered link is told once', links, async () => {
    const over = (id) => press($(id), 'mouseover');
    const [one, two] = ['mouseover: https://one.example/?a=1&b=2', 'mouseover: mailto:a@b.example'];
    window.onerror = (error) => record.push(error);
    await tells(() => over('#in'), one);
    await tells(async () => over('#one', await advance(49)));
    await tells(() => [over('#two'), over('#one')], two, one);
    await tells(async () => over('#one', await advance(50)), one);
    await tells(() => over('#out'), 'mouseover: ');
    await tells(() => press(document, 'mouseover'));
    await tells(() => over('#two', $('#two').onmouseover = (event) => event.stopPropagation()), two);
    await tells(() => over('#one', webkit.messageHandlers.ondrel.postMessage = null));
  });

  const notifying = {
    scripts: ['notificationShimScript'],
    html: '<script>window.Notification = null</script>'
  };
  test('The page may notify and shows nothing', notifying, async () => {
    const asked = [new Notification('hello', {body: 'x'}) instanceof Notification, Notification.permission];
    asked.push(await Notification.requestPermission((answer) => asked.push(answer)));
    asked.push(await Notification.requestPermission('no function'));
    same(asked, [true, 'granted', 'granted', 'granted', 'granted']);
  });

  const html = '<iframe src=/frame></iframe>';
  test('Printing asks the program', {scripts: ['printShimScript'], html}, async () => {
    await tells(() => window.print(), 'print');
    same($('iframe').contentWindow.print.toString().includes('native code'), true);
  });

  const frame = '<script>console.log("framed")</script>';
  test('The console is relayed', {scripts: ['consoleRelayScript'], html, frame}, async () => {
    same(told(), ['consoleLog: [log] framed', 'framed']);
    const relays = (action, line, ...rest) => tells(action, `consoleLog: ${line}`, ...rest);
    await relays(
        () => console.log('a', 1, null, undefined, {b: [2]}), '[log] a 1 null undefined {"b":[2]}',
        'a 1   [object Object]');
    await relays(() => console.warn(Symbol('s')), '[warn] Symbol(s)');
    await relays(() => onerror('text', 'page.js', 3, 7, {why: 1}), '[onerror] text at page.js:3:7 {"why":1}');
    await relays(() => settle(Promise.reject(new Error('lost'))), '[unhandledrejection] Error: lost');
  });
}
