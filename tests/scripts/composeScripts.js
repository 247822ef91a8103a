// The scripts that give composing a window of its own.
{
  const hooked = {
    scripts: ['consoleRelayScript', 'composePresetScript', 'composeHookScript'],
    html: '<a id=link href="/mail/Inbox/compose?u=1">New</a><button id=reply>Reply</button>',
  };

  // The application's actions, called within an event as the application does it, record that they ran.
  const startApplication = () => {
    const action = (name) => function(...args) {
      record.push([name, this === FastMail.router.appController, ...args].join(' '));
    };
    window.FastMail = {router: {appController: {goCompose: action('compose'), goNewCompose: action('new')}}};
    document.onkeydown = () => act('goCompose', 1, 2);
    $('#link').onclick = (event) => [event.preventDefault(), act('goNewCompose', 3)];
    $('#reply').onclick = () => act('goNewCompose', 4);
    $('#reply').onpointerdown = () => act('goCompose', 5);
  };
  const act = (name, ...args) => FastMail.router.appController[name](...args);
  const press = (code, shiftKey = false) => key('', document.body, {code, shiftKey});
  const click = (id, shiftKey = false) =>
      $(id).dispatchEvent(new PointerEvent('click', {bubbles: true, cancelable: true, shiftKey}));
  const down = (Type) => $('#reply').dispatchEvent(new Type('pointerdown'));
  const linkTo = (path) => $('#link').href = path;

  test('Only a new message opens a window', {...hooked, path: '/mail/Inbox/T1.M4?u=1'}, async () => {
    startApplication();
    await advance(1999);
    await tells(() => press('KeyC', true), 'compose true 1 2');
    await tells(() => advance(1), 'composeReady');
    const opened = `compose: ${location.origin}/mail/Inbox/compose?u=1&ui=minimal`;
    const check = (wanted, action, ...expected) => {
      composeInWindow = wanted;  // as the program sets it
      return tells(action, ...expected);
    };
    await check(false, () => press('KeyC'), 'compose true 1 2');
    await check(false, () => press('KeyC', true), opened);
    await check(false, () => press('KeyX', true), 'compose true 1 2');
    await check(true, () => press('KeyC'), opened);
    await check(true, () => press('KeyX'), 'compose true 1 2');
    await check(true, () => down(PointerEvent), opened);
    await check(false, () => down(PointerEvent), 'compose true 5');
    await check(true, () => down(MouseEvent), 'compose true 5');
    await check(false, () => click('#link'), 'new true 3');
    await check(false, () => click('#link', true), opened);
    await check(true, () => click('#link'), opened);
    await check(true, () => click('#reply'), 'new true 4');
    await check(true, () => click('#link', linkTo('/contacts/compose')), 'new true 3');
    await check(true, () => click('#link', linkTo('/mail/settings')), 'new true 3');
    // Outside of any event it isn't the user who asks.
    await check(true, () => act('goCompose', 6), 'compose true 6');
    await check(false, () => act('goNewCompose', 7), 'new true 7');
  });

  const addressing = (path, address, ...complaint) =>
      test(`The address is that of the moment of the hook: ${path}`, {...hooked, path}, async () => {
        startApplication();
        delete FastMail.router.appController.goNewCompose;
        await tells(() => advance(2000), ...complaint, 'composeReady');
        history.pushState(null, '', '/elsewhere/now');
        await tells(() => press('KeyC', true), `compose: ${address}&ui=minimal`);
        await tells(() => act('goNewCompose'));
      });
  const {origin} = location;
  addressing('/mail/Plans/T1.M4?u=1#part', `${origin}/mail/Plans/compose?u=1#part`);
  addressing('/mail//Plans//', `${origin}/mail/compose`);
  const complaint = 'Failed to transform URL: No path segments found';
  addressing('/', '', `consoleLog: [log] ${complaint}`, complaint);

  test(
      'A page without the application goes on', {...hooked, html: '<iframe src=/frame></iframe>'},
      async () => {
        same([composeInWindow, $('iframe').contentWindow.composeInWindow], [false, false]);
        await advance(10000);
        await tells(
            settle, 'consoleLog: [unhandledrejection] ReferenceError: Can\'t find variable: FastMail');
      });

  test('A toast tells of a discarded draft', {scripts: ['discardWatcherScript']}, async () => {
    const toast = (text) => `<p class=v-Notification-message> ${text} </p>`;
    await tells(() => show(toast('Discarded draft')), 'discardClicked');
    await tells(() => show(toast('Discarded 2 drafts')), 'discardClicked');
    await tells(() => show(`<div><div>${toast('Discarded draft')}</div></div>`), 'discardClicked');
    await tells(
        () => [1, 2].forEach(() => show(toast('Discarded draft'))), 'discardClicked', 'discardClicked');
    await tells(() => show(toast('Your draft is not Discarded')));
    await tells(() => show(toast('Discarded changes')));
    await tells(() => show('<p>Discarded draft</p>'));
    await tells(() => document.body.append('Discarded draft', document.createComment('draft')));
    await tells(() => show('<div class=v-Notification-action><b id=undo>Undo</b></div>'));
    $('#undo').onclick = (event) => event.stopPropagation();
    await tells(() => $('#undo').click(), 'discardUndone');
    await tells(() => document.body.click(document.dispatchEvent(new MouseEvent('click'))));
  });

  const withDraft = (draft) => window.FastMail = {router: {appController: {draft}}};
  const sending = {
    scripts: ['sendWatcherScript'],
    html: '<b class=s-send><i id=send></i></b><i id=other></i>'
  };
  test('Only a message that can be sent is told of', sending, async () => {
    $('#send').onclick = (event) => event.stopPropagation();
    const send = (draft, ...expected) => tells(() => {
      withDraft(draft);
      $('#send').click();
      $('#other').click();
      document.dispatchEvent(new MouseEvent('click'));
    }, ...expected);
    const [subject, to] = ['S', ['a']];
    await send({subject, to}, 'sendClicked');
    await send({subject: ' ', to});
    await send({subject, to: []});
    await send({subject, to: 'a'});
    await send({subject: {trim: () => 'S'}, to});
    await send(null);
  });

  const dialog = '<b class=v-Compose-sendDialog></b>';
  for (const html of [dialog, `<div><p></p><i>${dialog}</i></div>`]) {
    for (const to of [[1], []]) {
      test(`The send dialog tells once: ${html} ${to}`, sending, async () => {
        withDraft({subject: 'S', to});
        await tells(() => document.body.append('text', element('<p>no dialog</p>')));
        await tells(() => document.body.append('text', element(html)), ...to.map(() => 'sendClicked'));
        withDraft({subject: 'S', to: [1]});
        await tells(() => show(html));
        await tells(() => [1, 2].forEach(() => $('.s-send').click()), 'sendClicked', 'sendClicked');
      });
    }
  }

  const editor = `<section id=compose><button id=close><svg class='v-Icon i-close'></svg></button>
    <button id=keep><svg class='v-Icon i-bold'></svg></button><svg class=i-expand></svg>
    <div class='x v-ContextualSidebar-panel'></div><p id=editor>text</p></section>`;
  for (const html of [`<nav>list</nav><div>${editor}</div>`, '<nav>list</nav>']) {
    test(
        `A compose page is reduced to the editor: ${html}`, {scripts: ['chromeRemoverScript'], html},
        async () => {
          if (!$('#compose')) {
            show('<p>loading</p>');
            await settle();
            same($$('nav, body > p').length, 2, 'left alone');
            show(`<div>${editor}</div>`);
            await settle();
          }
          const left = [...document.body.children, ...$('#compose').children];
          same(left.map(({id, tagName}) => id || tagName), ['compose', 'keep', 'svg', 'editor']);
          // What the application draws later goes as well.
          $('#compose')
              .append(
                  element('<div><button><i><svg class="i-sidebar"></svg></i></button></div>'),
                  element('<button><svg class="i-expand"></svg></button>'),
                  element('<b class=v-ContextualSidebar></b>'));
          await settle();
          same(
              $('#editor').nextSibling.outerHTML + $('#compose').lastChild.outerHTML,
              '<div></div><div></div>');
          // What is put beside the editor stays: toasts among others.
          show('<p id=toast>x</p>');
          await settle();
          same(document.body.children.length, 2);
        });
  }
}
