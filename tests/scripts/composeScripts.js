// The scripts that give composing a window of its own.
{
  const hooked = {
    scripts: ['consoleRelayScript', 'composePresetScript', 'composeHookScript'],
    html: '<a id=link href="/mail/Inbox/compose?u=1">New</a><button id=reply>Reply</button>',
  };

  // The application's actions, called within an event as the application does it, record that they ran.
  const act = (name, ...args) => FastMail.router.appController[name](...args);
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
  const type = (code, shiftKey = false) => key('', document.body, {code, shiftKey});
  const click = (id, shiftKey = false) => press($(id), 'click', {shiftKey});
  const down = (Type) => press($('#reply'), 'pointerdown', {}, Type);
  const linkTo = (path) => $('#link').href = path;

  test('Only a new message opens a window', {...hooked, path: '/mail/Inbox/T1.M4?u=1'}, async () => {
    startApplication();
    await advance(1999);
    await tells(() => type('KeyC', true), 'compose true 1 2');
    await tells(() => advance(1), 'composeReady');
    await tells(comeBack, 'composeReady');
    const opened = `compose: ${location.origin}/mail/Inbox/compose?u=1&ui=minimal`;
    for (const [wanted, action, expected] of [
             [false, () => type('KeyC'), 'compose true 1 2'],
             [false, () => type('KeyC', true), opened],
             [true, () => type('KeyC'), opened],
             [true, () => type('KeyX'), 'compose true 1 2'],
             [true, () => down(PointerEvent), opened],
             [true, () => down(MouseEvent), 'compose true 5'],
             [false, () => click('#link'), 'new true 3'],
             [false, () => click('#link', true), opened],
             [true, () => click('#link'), opened],
             [true, () => click('#reply'), 'new true 4'],
             [true, () => click('#link', linkTo('/contacts/compose')), 'new true 3'],
             [true, () => act('goCompose', 6), 'compose true 6'],  // nobody has asked
    ]) {
      composeInWindow = wanted;  // as the program sets it
      await tells(action, expected);
    }
  });

  const addressing = (path, address, ...complaint) =>
      test(`The address is that of the moment of the hook: ${path}`, {...hooked, path}, async () => {
        startApplication();
        delete FastMail.router.appController.goNewCompose;
        await tells(() => advance(2000), ...complaint, 'composeReady');
        history.pushState(null, '', '/elsewhere/now');
        await tells(() => type('KeyC', true), `compose: ${address}&ui=minimal`);
        await tells(() => act('goNewCompose'));
      });
  const {origin} = location;
  addressing('/mail/Plans/T1.M4?u=1#part', `${origin}/mail/Plans/compose?u=1#part`);
  addressing('/mail//Plans//', `${origin}/mail/compose`);
  const complaint = 'Failed to transform URL: No path segments found';
  addressing('/', '', `consoleLog: [log] ${complaint}`, complaint);

  test('A toast tells of a discarded draft', {scripts: ['discardWatcherScript']}, async () => {
    const toast = (text) => `<p class=v-Notification-message> ${text} </p>`;
    const draft = toast('Discarded draft');
    await tells(() => [show(draft), show(`<div>${draft}</div>`)], 'discardClicked', 'discardClicked');
    await tells(() => [show(toast('Discarded changes')), show('<p>Discarded draft</p>')]);
    await tells(() => show('<div class=v-Notification-action><b id=undo>Undo</b></div>'));
    $('#undo').onclick = (event) => event.stopPropagation();
    await tells(() => $('#undo').click(), 'discardUndone');
    await tells(() => document.body.click(press(document, 'click')));
  });

  const withDraft = (draft) => window.FastMail = {router: {appController: {draft}}};
  const sending = {
    scripts: ['sendWatcherScript'],
    html: '<b class=s-send><i id=send></i></b><i id=other></i>'
  };
  test('Only a message that can be sent is told of', sending, async () => {
    $('#send').onclick = (event) => event.stopPropagation();
    const [subject, to] = ['S', ['a']];
    const drafts = [{subject: ' ', to}, {subject, to: []}, {subject, to: 'a'}, null];
    for (const [draft, ...expected] of [[{subject, to}, 'sendClicked'], ...drafts.map((each) => [each])]) {
      withDraft(draft);
      await tells(() => ['#send', '#other'].map((id) => press($(id), 'click')), ...expected);
    }
    const dialog = '<b class=v-Compose-sendDialog></b>';
    await tells(() => show(dialog));
    withDraft({subject, to});
    for (const html of [dialog, `<div><i>${dialog}</i></div>`]) {
      await tells(() => show(html), 'sendClicked');
    }
  });

  const editor = `<section id=compose><button id=close><svg class='v-Icon i-close'></svg></button>
    <button id=keep><svg class='v-Icon i-bold'></svg></button><svg class=i-expand></svg>
    <div class='x v-ContextualSidebar-panel'></div><p id=editor>text</p></section>`;
  const reducing = (html, late) => test(
      `A compose page is reduced to the editor: ${html}`, {scripts: ['chromeRemoverScript'], html},
      async () => {
        const shows = (more) => settle(show(more));
        if (late) {
          await shows('<p>loading</p>');
          same($$('nav, body > p').length, 2, 'left alone');
          await shows(late);
        }
        const left = [...document.body.children, ...$('#compose').children];
        same(left.map(({id, tagName}) => id || tagName), ['compose', 'keep', 'svg', 'editor']);
        // What the application draws later goes as well.
        const later = ['<i><svg class="i-sidebar"></svg></i>', '<svg class="i-expand"></svg>'].map(
            (icon) => `<div><button>${icon}</button></div>`);
        $('#compose').append(...[...later, '<div><b class=v-ContextualSidebar></b></div>'].map(element));
        await settle();
        same($$('#editor ~ *').map(({innerHTML}) => innerHTML), ['', '', '']);
        // What is put beside the editor stays: toasts among others.
        await shows('<p id=toast>x</p>');
        same(document.body.children.length, 2);
      });
  const fields = `<section id=compose><input name=to><input name=subject><input type=file>
    <div contenteditable=true id=text>text</div></section>`;
  const focusing = (what, path, expected, prepare = () => {}) => test(
      `The cursor is where the user goes on: ${what}`, {scripts: ['chromeRemoverScript'], path}, async () => {
        show(`<div>${fields}</div>`);
        prepare();
        await settle();
        const focused = () => document.activeElement.name ?? document.activeElement.id;
        same(focused(), expected);
        same(document.body.children.length, 1);
        // What comes and goes around the editor leaves the cursor and what is selected.
        getSelection().setBaseAndExtent($('#text').firstChild, 1, $('#text').firstChild, 3);
        const before = [focused(), String(getSelection())];
        show('<p>toast</p>');
        await settle();
        same([focused(), String(getSelection())], before);
      });
  focusing('new', '/mail/compose?u=1', 'to');
  focusing('recipient', '/mail/compose?to=a', 'subject');
  focusing('empty recipient', '/mail/compose?to=&u=1', 'to');
  focusing('both', '/mail/compose?to=a&subject=b', 'text', () => $('[name=subject]').value = 'b');
  focusing('by the application', '/mail/compose', 'text', () => $('#text').focus());

  reducing(`<nav>list</nav><div>${editor}</div>`);
  reducing('<nav>list</nav>', `<div>${editor}</div>`);
}
