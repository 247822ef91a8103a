// A file that is too large becomes a link.
{
  const row = 'u-flex u-flex-wrap u-m-0 u-hideifempty';
  const options = {
    scripts: ['filesAutoShareScript', 'filesAutoShareScript'],  // injected twice, it works once
    html: `<section class=v-Compose><div class='${row}'></div><div id=body></div></section>`,
  };
  const refusal = '"File too large" modal detected for: ';
  const linkUrl = 'https://share.example/x?a=1&b="2"';
  const shared = (name) => `Shared via Fastmail Files: ${name} - ${linkUrl}`;
  const sorry = (name) => `Could not share "${name}" via Fastmail Files — attach it manually.`;
  const reports = (outcome, name, reason = '') => `ondrelFilesAutoShare: ${outcome}, ${name}, ${reason}`;
  shorten = (line) => line.replace(/^\[Ondrel\] files-auto-share: /, '');

  // The application's storage. The case decides when an upload ends (`finish`) and what is missing.
  let [uploads, nodes, inputs, makesLinks] = [[], [], 0, true];
  const node = (values) => ({
    get: (name) => values[name],
    set(name, value) {
      values[name] = value;
      if (name === 'isSharedLinkEnabled' && value === true && makesLinks) {
        setTimeout(() => values.sharedLinkUrl = linkUrl, 400);
      }
    },
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
  const removeChip = () => same(press($('.v-ComposeAttachment-remove'), 'click'), true);
  const start = () => {
    same(told(), [`script installed on ${location.href}`]);
    window.FastMail = {
      store: {getAll: (type) => type === StorageNode ? nodes : null},
      router: {
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
    const holder = element(`<div><div class="v-Dialog u-modal" role=alertdialog><h1></h1><p class=u-trim></p>
        </div></div>`);
    const shown = holder.firstChild;
    [shown.children[0].textContent, shown.children[1].textContent] = [` ${title} `, `\n${text}\n`];
    document.body.append(holder);
    return shown;
  };
  const refuse = async (name) => {
    const shown = modal(textFor(name));
    await settle();
    return shown;
  };
  const share = async (name) => {
    attach(name);
    await refuse(name);
    await advance(1000);
    finish(name);
    await advance(1500);
  };

  test('A refused file becomes a link', options, async () => {
    start();
    rich('<p>Hello</p><blockquote>old</blockquote>');
    attach('big.zip', 12);
    const shown = await refuse('big.zip');
    same([...shown.children].map((child) => child.textContent), [
      'Uploading via Fastmail Files',
      '"big.zip" is too large to attach directly. Ondrel is uploading it to ' +
          'Fastmail Files and will add a share link to your email automatically.'
    ]);
    await tells(
        () => advance(1000), 'captured file via change: big.zip (12 bytes)', `${refusal}big.zip`,
        'processing oversized attachment: big.zip',
        'uploadToCurrent threw (expected — it tries to notify a UI view that is not mounted, after already ' +
            'starting the upload): TypeError: no view');
    same(uploads, ['big.zip 12 true']);
    const parts = () =>
        $$('.v-ComposeAttachment > div > *').map((part) => part.outerHTML.replace(/<svg.*<\/svg>/, '~'));
    const [label, size] = ['class="v-ComposeAttachment-label"', '<p class="v-ComposeAttachment-size">'];
    const [divider, remove] =
        ['<span class="v-ComposeAttachment-divider"></span>', 'v-Button v-ComposeAttachment-remove'];
    same([chip().parentElement.className, ...parts()], [
      row, '~', `<span ${label}>big.zip</span>`,
      `${size}<span class="ondrel-files-spinner"></span>Uploading via Fastmail Files…</p>`, divider,
      `<button class="${remove}" type="button" style="visibility: hidden;">~</button>`
    ]);
    same(getComputedStyle($('.ondrel-files-spinner')).animationName, 'ondrelFilesSpin');

    finish('big.zip');
    await tells(
        () => advance(1400), `uploaded and shared "big.zip": ${linkUrl}`,
        'inserted share link for "big.zip" into the open compose', reports('success', 'big.zip'));
    const url = 'https://share.example/x?a=1&amp;b=&quot;2&quot;';
    same(parts(), [
      '~', `<a ${label} href="${url}" target="_blank" rel="noopener">big.zip</a>`,
      `${size}via Fastmail Files</p>`, divider, `<button class="${remove}" type="button" style="">~</button>`
    ]);
    const line =
        `<p data-ondrel-files-share="big.zip">Shared via Fastmail Files: <a href="${url}">big.zip</a></p>`;
    same([body(), inputs], [`<p>Hello</p>${line}<blockquote>old</blockquote>`, 1]);
    await tells(removeChip, 'removed the Fastmail Files share for "big.zip"');
    same([chip(), body(), inputs], [null, '<p>Hello</p><blockquote>old</blockquote>', 2]);
  });

  test('The link stands above the quote of a plain body', options, async () => {
    start();
    const line = shared('a.zip');
    for (const [before, after, removed] of [
             ['', line, ''], ['> old', `${line}\n> old`, '> old'],
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
    await share('b');
    ownValue($('textarea'), `${shared('b')}!\nmine`);
    $('textarea').setSelectionRange(2, 2);
    inputs = 0;
    removeChip();
    same([body(), inputs, $('textarea').selectionStart], [`${shared('b')}!\nmine`, 0, 2]);
  });

  const hostile = [
    '<img src=x onerror=attacked()>.zip', '"quotes" \'and\' `ticks` ] } \\', 'line\nbreak\r\n> quoted',
    'x'.repeat(10000), 'inv\u202efdp.exe', 'constructor', 'a. The total size is fine'
  ];
  test('Hostile names are text', options, async () => {
    start();
    for (const [name, open] of hostile.flatMap((each) => [[each, rich], [each, plain]])) {
      const isLabelled = () =>
          $('.v-ComposeAttachment-label').textContent === name && chip().dataset.ondrelFilesChip === name;
      open();
      nodes = [];
      attach(name);
      const shown = await refuse(name);
      const facts = [shown.children[1].textContent.startsWith(`"${name}" is too large`), isLabelled()];
      await advance(1000);
      finish(name);
      await advance(1500);
      facts.push(isLabelled(), !$('img'), told().at(-1) === reports('success', name));
      facts.push(
          open === rich ? $('#body a').textContent === name && $('#body p').children.length === 1 :
                          body() === shared(name).replace(/\r\n/g, '\n'));
      removeChip();
      same([...facts, body(), chip()], [...facts.map(() => true), '', null], `${open} ${name.slice(0, 99)}`);
    }
  });

  const missing = [
    `${refusal}a`,
    'no recently captured File object matches "a" — cannot auto-share it, leaving Fastmail\'s own message as-is',
    reports('error', 'a', 'no captured file'),
  ];
  const taking = (action, ...expected) =>
      test(`The freshest file is taken, once: ${action}`, options, async () => {
        start();
        await action();
        told();
        const shown = await refuse('a');
        if (expected.length === 0) {
          same(told(), missing);
          same(shown.children[1].textContent, `\n${textFor('a')}\n`, 'the words of the service stay');
        }
        told();
        await tells(() => refuse('a'), ...missing);  // taken
        await advance(1000);
        same(uploads, expected);
      });
  const give = (type, Type, field) => press(document.body, type, {[field]: transfer('a', 4)}, Type);
  taking(() => advance(15000, attach('a', 1)), 'a 1 true');
  taking(() => advance(15001, attach('a', 1)));
  taking(() => attach('b', 1));
  taking(async () => {
    await advance(10000, attach('a', 1));
    await advance(10000, attach('a', 2), attach('b', 3));
  }, 'a 2 true');
  taking(() => give('drop', DragEvent, 'dataTransfer'), 'a 4 true');
  taking(() => give('paste', ClipboardEvent, 'clipboardData'), 'a 4 true');
  taking(() => ['change', 'drop', 'paste'].forEach((type) => press(document.body, type)));

  const taken = [`${refusal}a`, 'processing oversized attachment: a'];
  const judging = (action, ...expected) =>
      test(`Only the refusal is rewritten: ${action}`, options, async () => {
        start();
        attach('a');
        told();
        await tells(action, ...expected);
      });
  judging(async () => {
    const shown = modal(textFor('a'));
    const [, paragraph] = shown.children;
    paragraph.remove();
    await settle();
    shown.append(paragraph);  // complete now
  }, ...taken);
  judging(async () => {
    const shown = modal(textFor('a'), 'Something else');
    await settle();
    shown.firstChild.textContent = 'File too large';  // it was judged
  });
  for (const text of ['It is 99MB.', `${textFor('a')} Sorry.`, `Sorry. ${textFor('a')}`]) {
    judging(
        () => modal(text),
        `modal titled "File too large" but message did not match the expected shape: ${text}`);
  }
  judging(() => modal(textFor('a').replace('70', '2.5')), ...taken);                       // another limit
  judging(() => refuse('a. The total size of attached files cannot exceed 1'), ...taken);  // the first counts
  judging(() => modal(textFor('a')).classList.remove('u-modal'));

  test('Files are handled one after the other', options, async () => {
    start();
    attach('a');
    attach('b', 1);
    attach('b');  // the newest of a name is taken
    modal(textFor('a'));
    await refuse('b');
    await advance(5000);
    same([uploads, $$('.v-ComposeAttachment').length], [['a 9 true'], 1]);
    finish('a');
    await advance(3000);
    same(uploads, ['a 9 true', 'b 9 true']);
    // The second fails: the queue goes on, and the modal's dismissal changes nothing.
    attach('c');
    (await refuse('c')).remove();
    makesLinks = false;
    finish('b');
    await advance(12000);
    makesLinks = true;
    finish('c');
    await advance(3000);
    await share('a');  // again: it has its chip
    const late = 'Error: timed out waiting for a share link to be generated for "b"';
    same(told().filter((line) => line.startsWith('ondrel')), [
      reports('success', 'a'), reports('error', 'b', late), reports('success', 'c'), reports('success', 'a')
    ]);
    same($$('.v-ComposeAttachment-label').map((label) => label.textContent), ['a', 'c']);
    const [a, c] = ['a', 'c'].map((name) => `Shared via Fastmail Files: ${name}`);
    same($$('#body p').map((paragraph) => paragraph.textContent), [a, sorry('b'), c, a]);
    same($$('style').length, 1);
  });

  const failing = (reason, prepare, milliseconds = 0, step = 0) =>
      test(`A failure is told in the body and the report: ${reason}: ${prepare}`, options, async () => {
        start();
        rich('<blockquote>q</blockquote>');
        attach('a');
        prepare();
        await refuse('a');
        const end = () => told().filter((line) => /^(failed|ondrel)/.test(line));
        if (step > 0) {
          await advance(milliseconds - step);
          same([end(), chip() !== null], [[], true], 'too early');
        }
        await advance(step);
        const error = `Error: ${reason}`;
        same(end(), [`failed to auto-share "a": ${error}`, reports('error', 'a', error)]);
        same([chip(), body(), inputs], [null, `<p>${sorry('a')}</p><blockquote>q</blockquote>`, 1]);
      });
  const noInternals = 'FastMail internals not available';
  const timedOut = (what) => `timed out waiting for ${what}`;
  failing(noInternals, () => delete window.FastMail);
  failing(noInternals, () => FastMail.store = null);
  failing(noInternals, () => FastMail.router.loadApp = {});
  failing(
      'FastMail Files classes still not available after loadApp("files")',
      () => FastMail.router.loadApp = () => {});
  const noRoot = timedOut('the "My Files" root folder to sync');
  failing(noRoot, () => FastMail.store.getAll = () => null.none, 10000, 250);
  failing(timedOut('the upload of "a" to finish'), () => {}, 600750, 1000);
  const finishWithoutLink = () => setTimeout(() => finish('a'), 900, makesLinks = false);
  failing(timedOut('a share link to be generated for "a"'), finishWithoutLink, 11750, 250);

  test('It goes on without what it can do without', options, async () => {
    start();
    plain('> q');
    $('.u-hideifempty').remove();
    const {loadApp} = FastMail.router;
    FastMail.router.loadApp = async (name) => {
      await loadApp(name);
      throw new Error('late');
    };
    await share('a');
    const [, , , noRow, loading, ...rest] = told();
    same([noRow, loading, rest.at(-1), body()], [
      'could not show the uploading chip for "a": Error: could not find the attachment chip row',
      'loadApp("files") threw, continuing in case the classes are already available: Error: late',
      reports('success', 'a'), `${shared('a')}\n> q`
    ]);
    // Without an editor only the report goes out.
    delete window.FastMail;
    $('#body').innerHTML = '';
    attach('a');
    await refuse('a');
    told(await advance(9999));
    await tells(
        () => advance(1),
        `also could not write the error message into compose for "a": Error: ${
            timedOut('the compose editor to be present')}`,
        reports('error', 'a', `Error: ${noInternals}`));
  });
}
