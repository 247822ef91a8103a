// A file that is too large becomes a link.
{
  const compose = `<section class=v-Compose><div class='u-flex u-flex-wrap u-m-0 u-hideifempty'></div>
    <div id=body></div></section>`;
  const options = {
    scripts: ['filesAutoShareScript', 'filesAutoShareScript'],  // injected twice, it works once
    html: compose,
  };
  const linkUrl = 'https://share.example/x?a=1&b="2"';
  const shared = (name) => `Shared via Fastmail Files: ${name} - ${linkUrl}`;
  const sorry = (name) => `Could not share "${name}" via Fastmail Files — attach it manually.`;
  const reports = (outcome, name, reason = '') => `ondrelFilesAutoShare: ${outcome}, ${name}, ${reason}`;
  const timedOut = (what) => `Error: timed out waiting for ${what}`;
  const noEditor = timedOut('the compose editor to be present');
  shorten = (line) => line.startsWith('ondrel') ? line : null;

  // The application's storage, late in all it does. The case decides when an upload ends (`finish`) and what
  // is missing. A store gives no array: it has been taken for one, and every share failed.
  let [uploads, nodes, inputs, makesLinks] = [[], [], 0, true];
  const node = (values) => ({
    get: (name) => values[name],
    set(name, value) {
      values[name] = value;
      if (name === 'isSharedLinkEnabled' && value === true && makesLinks) {
        setTimeout(() => values.sharedLinkUrl ??= linkUrl, 2000);
      }
    },
  });
  const collection = (records) => ({
    length: () => records.length,
    getObjectAt: (i) => records[i],
    find: (accepts) => records.find((record) => accepts(record)) ?? null,
  });
  class StorageNode {}
  class StorageNodeListController {
    constructor({store, folder}) {
      this.isRight = store === FastMail.store && folder.get('name') === 'My Files';
    }
    uploadToCurrent([file]) {
      uploads.push(`${file.name} ${file.size} ${this.isRight}`);
      nodes.push(node({name: file.name}));
      throw new TypeError('no view');
    }
  }
  const finish = (name) =>
      nodes.findLast((n) => n.get('name') === name && !n.get('blobId')).set('blobId', 'G1');

  const rich = (html = '') => $('#body').innerHTML =
      `<div class=v-RichText-input contenteditable=true>${html}</div>`;
  const plain = (text = '') => {
    $('#body').innerHTML = '<textarea class=v-TextInput-input></textarea>';
    ownValue($('textarea'), text);
  };
  const body = () => $('textarea')?.value ?? $('#body > div').innerHTML;
  const chip = () => $('.v-ComposeAttachment');
  const label = () => $('.v-ComposeAttachment-label');
  const removeChip = () => same(press($('.v-ComposeAttachment-remove'), 'click'), true);
  const start = (getAll = () => collection(nodes)) => {
    window.FastMail = {
      store: {getAll: (type) => type === StorageNode ? getAll() : null},
      router: {
        appController: {draft: {to: [], subject: ''}},
        async loadApp(name) {
          FastMail.classes = {StorageNode, StorageNodeListController};
          setTimeout(() => name === 'files' && nodes.push(node({name: 'My Files'})), 600);
        }
      },
    };
    $('#body').addEventListener('input', () => ++inputs);
    rich();
  };

  const transfer = (name, size) => {
    const data = new DataTransfer();
    data.items.add(new File(['x'.repeat(size)], name));
    return data;
  };
  const attach = (name, size = 9) => {
    const input = element('<input type=file>');
    document.body.append(input);
    input.files = transfer(name, size).files;
    input.dispatchEvent(new Event('change', {bubbles: true}));
    input.remove();
  };
  const textFor = (name) =>
      `Cannot attach file ${name}. The total size of attached files cannot exceed 70MB.`;
  const modal = (text, title = 'File too large') => {
    show('<div><div class="v-Dialog u-modal" role=alertdialog><h1></h1><p class=u-trim></p></div></div>');
    const shown = document.body.lastChild.firstChild;
    [shown.children[0].textContent, shown.children[1].textContent] = [` ${title} `, `\n${text}\n`];
    return shown;
  };
  const refuse = async (name) => {
    const shown = modal(textFor(name));
    await settle();
    return shown;
  };
  const share = async (name, open = () => attach(name), meanwhile = () => {}) => {
    open();
    await refuse(name);
    await advance(1000);
    await meanwhile();
    finish(name);
    await advance(4000);
  };

  for (const getAll of [() => collection(nodes), () => nodes]) {
    test(`A refused file becomes a link: ${getAll}`, options, async () => {
      start(getAll);
      rich('<p>Hello</p><blockquote>old</blockquote>');
      attach('big.zip', 12);
      const [title, text] = [...(await refuse('big.zip')).children].map((child) => child.textContent);
      same([title, text.startsWith('"big.zip" is too large')], ['Uploading via Fastmail Files', true]);
      await advance(1000);
      same([uploads, label().textContent], [['big.zip 12 true'], 'big.zip']);
      finish('big.zip');
      await tells(() => advance(4000), reports('success', 'big.zip'));
      same([label().href, label().target], [new URL(linkUrl).href, '_blank']);
      const {firstElementChild: link, textContent} = $('#body p + p:has(+ blockquote)');
      same(
          [textContent, link.getAttribute('href'), inputs],
          ['Shared via Fastmail Files: big.zip', linkUrl, 1]);
      removeChip();
      same([chip(), body(), inputs], [null, '<p>Hello</p><blockquote>old</blockquote>', 2]);
    });
  }

  test('The link stands above the quote of a plain body, the user where he was', options, async () => {
    start();
    const line = shared('a.zip');
    for (const [before, after, removed] of [
             ['', line, ''], ['\n> old', `${line}\n> old`, '> old'],
             ['Hi\n\nW:\n> old\n-- \nR', `Hi\n\nW:\n\n${line}\n> old\n-- \nR`, 'Hi\n\nW:\n\n> old\n-- \nR'],
             ['no > quote\n', `no > quote\n\n\n${line}`, 'no > quote\n\n']]) {
      [inputs, nodes] = [0, []];
      plain(before);
      await share('a.zip');
      same([body(), inputs], [after, 1]);
      removeChip();
      same([body(), inputs], [removed, 2]);
    }
    // The first line that equals what was written goes, and nothing that the user has changed.
    await share('a.zip');
    ownValue($('textarea'), `x ${line}\n${line}\n${line}`);
    removeChip();
    same(body(), `x ${line}\n${line}`);

    plain(`${'mine\n'.repeat(99)}> old\n-- \nR`);
    const area = $('textarea');
    area.focus();
    area.setSelectionRange(body().length - 1, body().length, 'backward');
    area.scrollTop = 500;
    const place = () => [String(getSelection()), area.selectionDirection, area.scrollTop];
    await share('a.zip');
    same(place(), ['R', 'backward', 500]);
    removeChip();
    same(place(), ['R', 'backward', 500]);
  });

  const hostile =
      ['<img src=x onerror=attacked()>"\'`.zip', 'line\nbreak\r\n> quoted', 'a. The total size is fine'];
  test('Hostile names are text', options, async () => {
    start();
    for (const [name, open] of hostile.flatMap((each) => [[each, rich], [each, plain]])) {
      open();
      nodes = [];
      await share(name);
      same([label().textContent, told(), $('img')], [name, [reports('success', name)], null]);
      same(
          open === rich ? $('#body a').textContent : body(),
          open === rich ? name : shared(name).replace(/\r\n/g, '\n'));
      removeChip();
      same([body(), chip()], ['', null]);
    }
  });

  // An application that shows letters in turn in one element tells them apart by its draft.
  const alice = {to: [{email: 'alice@x.example'}], subject: 'Plans'};
  const bob = {to: ['bob@x.example'], subject: 'Other'};
  const draft = (values) => FastMail.router.appController.draft = values;
  const writing = (what, isWritten, action) =>
      test(`The link goes into the letter that refused it: ${what}`, options, async () => {
        start();
        draft({...alice, id: () => 'D1'});
        rich('<p>Dear Alice</p>');
        await share('a', () => attach('a'), action);
        await advance(25000);
        same(told(), [isWritten ? reports('success', 'a') : reports('error', 'a', noEditor)]);
        same([$$('#body a').length, Boolean(chip())], [isWritten ? 1 : 0, isWritten]);
        same(body().includes('Could not'), false);
        same(nodes.at(-1).get('isSharedLinkEnabled'), isWritten || undefined, 'shared for nobody');
      });
  writing('in another element', false, () => [$('.v-Compose').remove(), show(compose), rich('<p>B</p>')]);
  writing('by another draft', false, () => draft(bob));
  writing('by another text', false, () => [draft({...alice, to: bob.to}), rich('<p>Dear Bob</p>')]);
  writing('step by step', false, async () => {
    draft({...bob, subject: 'Plans'});
    await advance(300, show('<p>change</p>'));
    draft(bob);
  });
  writing('the element comes back', true, async () => {
    const element = $('.v-Compose');
    await advance(5000, element.remove());
    document.body.append(element);
  });
  writing('saved, changed one by one, without a draft', true, async () => {
    for (const change
             of [() => draft({...alice, id: 'D2'}), () => draft({...bob, subject: 'Plans', id: 'D2'}),
                () => draft({...bob, id: 'D2'}), () => rich('<p>Dear Alice</p>'),
                () => $('#body p').append('!'), () => draft(null), () => draft({...bob, id: 'D3'})]) {
      await advance(3000, show('<p>change</p>', change()));
    }
  });
  test('Of two letters each gets its own', options, async () => {
    start();
    show(compose.replaceAll('body', 'second'));
    $('#second').append($('#body > div').cloneNode());
    await share('a', () => press($('#second > div'), 'drop', {dataTransfer: transfer('a', 4)}, DragEvent));
    same([body(), $('#second').textContent], ['', 'Shared via Fastmail Files: a']);
  });

  const finding = (what, older, late, expected) =>
      test(`The new file is shared, not an older one: ${what}`, options, async () => {
        start();
        nodes.push(...older.map((values) => node({name: 'a', blobId: 'old', ...values})));
        attach('a');
        await refuse('a');
        await advance(5000);
        same(told(), []);
        nodes.pop();  // the record of the upload: the service has its own ways
        late();
        await advance(600000);
        same(nodes.map((n) => n.get('isSharedLinkEnabled') ? n.get('which') : ''), expected);
      });
  const add = (size) => nodes.push(node({name: 'a', blobId: 'new', which: 'new', size}));
  const [small, fit] = [{size: 1, which: 'small'}, {size: 9, which: 'fit'}];
  finding('one more', [small, fit], () => add(9), ['', '', '', 'new']);
  finding('replaced', [small, {which: 'it'}], () => nodes[1].set('blobId', 'new'), ['', 'it', '']);
  finding('the same again', [small, fit], () => {}, ['', 'fit', '']);
  finding('known late', [], () => add(1), ['', '']);

  const missing = reports('error', 'a', 'no captured file');
  const taking = (action, ...expected) =>
      test(`The freshest file is taken, once: ${action}`, options, async () => {
        start();
        await action();
        const shown = await refuse('a');
        if (expected.length === 0) {
          same([told(), shown.children[1].textContent], [[missing], `\n${textFor('a')}\n`]);
        }
        await tells(() => refuse('a'), missing);  // taken
        await advance(1000);
        same(uploads, expected);
      });
  const give = (type, Type, field) => press(document.body, type, {[field]: transfer('a', 4)}, Type);
  taking(() => advance(15000, attach('a', 1)), 'a 1 true');
  taking(() => advance(15001, attach('a', 1)));
  taking(async () => {
    await advance(10000, attach('a', 1));
    await advance(10000, attach('a', 2), attach('b', 3));
  }, 'a 2 true');
  taking(() => give('paste', ClipboardEvent, 'clipboardData'), 'a 4 true');

  test('Only the refusal is rewritten', options, async () => {
    start();
    attach('a');
    const isTaken = async (shown) => {
      await settle(shown);
      return Boolean(chip());
    };
    same(await isTaken(modal(textFor('a'), 'Something else')), false);
    same(await isTaken(modal(`${textFor('a')} Sorry.`)), false);
    const shown = modal(textFor('a').replace('70', '2.5'));  // another limit
    const [, paragraph] = shown.children;
    same(await isTaken(paragraph.remove()), false);
    same(await isTaken(shown.append(paragraph)), true, 'complete now');
  });

  test('Files are handled one after the other', options, async () => {
    start();
    await refuse('a', attach('a'));
    await refuse('b', attach('b'));
    await advance(5000);
    same([uploads, $$('.v-ComposeAttachment').length], [['a 9 true'], 1]);
    await advance(4000, finish('a'));
    same(uploads, ['a 9 true', 'b 9 true']);
    // The second fails: the queue goes on, and the modal's dismissal changes nothing.
    (await refuse('c', attach('c'))).remove();
    makesLinks = false;
    await advance(12000, finish('b'));
    makesLinks = true;
    await advance(4000, finish('c'));
    await share('a');  // again: it has its chip
    const late = timedOut('a share link to be generated for "b"');
    same(told(), [
      reports('success', 'a'), reports('error', 'b', late), reports('success', 'c'), reports('success', 'a')
    ]);
    same($$('.v-ComposeAttachment-label').map((each) => each.textContent), ['a', 'c']);
    const [a, c] = ['a', 'c'].map((name) => `Shared via Fastmail Files: ${name}`);
    same($$('#body p').map((paragraph) => paragraph.textContent), [a, sorry('b'), c, a]);
  });

  const failing = (reason, prepare, milliseconds = 0) =>
      test(`A failure is told in the body and the report: ${reason}: ${prepare}`, options, async () => {
        start();
        rich('<blockquote>q</blockquote>');
        attach('a');
        prepare();
        await refuse('a');
        await advance(milliseconds);
        same(
            [told(), chip(), body()],
            [[reports('error', 'a', reason)], null, `<p>${sorry('a')}</p><blockquote>q</blockquote>`]);
      });
  const noInternals = 'Error: FastMail internals not available';
  failing(noInternals, () => FastMail.router.loadApp = {});
  failing(timedOut('the "My Files" root folder to sync'), () => FastMail.store.getAll = () => null, 10000);
  failing(timedOut('the upload of "a" to finish'), () => {}, 600750);
  const finishWithoutLink = () => setTimeout(() => finish('a'), 900, makesLinks = false);
  failing(timedOut('a share link to be generated for "a"'), finishWithoutLink, 11750);

  test('It goes on without what it can do without', options, async () => {
    start();
    plain('> q');
    $('.u-hideifempty').remove();
    await share('a');
    same([told(), body()], [[reports('success', 'a')], `${shared('a')}\n> q`]);
    // Without an editor only the report goes out.
    delete window.FastMail;
    $('#body').innerHTML = '';
    await refuse('a', attach('a'));
    await tells(() => advance(10000), reports('error', 'a', noInternals));
  });
}
