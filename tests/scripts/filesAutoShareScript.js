// A file that is too large becomes a link.
{
  const options = {
    scripts: ['filesAutoShareScript', 'filesAutoShareScript'],  // injected twice, it works once
    html:
        `<section class=v-Compose><div class='u-flex u-flex-wrap u-m-0 u-hideifempty'></div><div id=body></div>
           </section>`,
  };
  const refusal = '"File too large" modal detected for: ';
  const linkUrl = 'https://share.example/x?a=1&b="2"';
  const shared = (name, url = linkUrl) => `Shared via Fastmail Files: ${name} - ${url}`;
  const sorry = (name) => `Could not share "${name}" via Fastmail Files — attach it manually.`;

  // The application's storage. The case decides when an upload ends (`finish`) and what is missing.
  let uploads, nodes, inputs;
  let makesLinks = true;
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
  const removeChip = () => {
    const click = new MouseEvent('click', {cancelable: true});
    $('.v-ComposeAttachment-remove').dispatchEvent(click);
    same(click.defaultPrevented, true);
  };

  // What was posted and logged, the script's own lines without their beginning.
  const lines = () => told().map((line) => line.replace(/^\[Ondrel\] files-auto-share: /, ''));
  const does = async (action, ...expected) => {
    await action();
    same(lines(), expected, String(action));
  };
  const start = () => {
    same(told(), [`[Ondrel] files-auto-share: script installed on ${location.href}`]);
    [uploads, nodes, inputs] = [[], [], 0];
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
  const modal = (title, text) => {
    const shown =
        element('<div class="v-Dialog u-modal" role=alertdialog><h1></h1><p class=u-trim></p></div>');
    shown.querySelector('h1').textContent = ` ${title} `;
    shown.querySelector('p').textContent = `\n${text}\n`;
    const holder = document.createElement('div');
    holder.append(shown);
    document.body.append(holder);
    return shown;
  };
  const refuse = async (name) => {
    const shown = modal('File too large', textFor(name));
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
      '"big.zip" is too large to attach directly. Ondrel is uploading it to Fastmail Files and will add a share link ' +
          'to your email automatically.',
    ]);
    await does(
        () => advance(1000), 'captured file via change: big.zip (12 bytes)', `${refusal}big.zip`,
        'processing oversized attachment: big.zip',
        'uploadToCurrent threw (expected — it tries to notify a UI view that is not mounted, after already starting ' +
            'the upload): TypeError: no view');
    same(uploads, ['big.zip 12 true']);
    same(
        $('.u-hideifempty').innerHTML,
        `<div class="v-ComposeAttachment" data-ondrel-files-chip="big.zip">
      <div class="u-flex u-relative u-items-center">
      <svg viewBox="0 0 24 24" class="u-standardicon v-Icon i-attachment u-sq-20 u-ml-2" role="presentation">
      <path d="M9.42,13l6.23-6.19c1.13-1.13,2.22-1.2,3-.43.61.61,1.08,1.74-.22,3l-7.94,7.89a3.36,3.36,0,0,1-4.75,0h0a
      3.33,3.33,0,0,1,0-4.72l6.84-6.8"></path></svg><span class="v-ComposeAttachment-label">big.zip</span>
      <p class="v-ComposeAttachment-size"><span class="ondrel-files-spinner"></span>Uploading via Fastmail Files…</p>
      <span class="v-ComposeAttachment-divider"></span><button class="v-Button v-ComposeAttachment-remove" type="button"
       style="visibility: hidden;"><svg viewBox="0 0 24 24" fill="none" stroke="currentColor" stroke-linecap="round"
       stroke-linejoin="round" stroke-width="1.5" role="presentation" class="v-Icon i-cancel">
      <line x1="16" y1="8" x2="8" y2="16"></line><line x1="8" y1="8" x2="16" y2="16"></line></svg></button></div></div>`
            .replace(/\n      /g, ''));
    same(getComputedStyle($('.ondrel-files-spinner')).animationName, 'ondrelFilesSpin');

    finish('big.zip');
    await does(
        () => advance(1400), `uploaded and shared "big.zip": ${linkUrl}`,
        'inserted share link for "big.zip" into the open compose',
        'ondrelFilesAutoShare: success, big.zip, ');
    const url = 'https://share.example/x?a=1&amp;b=&quot;2&quot;';
    same([...chip().firstChild.children].slice(1, 3).map((child) => child.outerHTML), [
      `<a class="v-ComposeAttachment-label" href="${url}" target="_blank" rel="noopener">big.zip</a>`,
      '<p class="v-ComposeAttachment-size">via Fastmail Files</p>',
    ]);
    same([body(), inputs, $('button').style.visibility], [
      '<p>Hello</p><p data-ondrel-files-share="big.zip">Shared via Fastmail Files: ' +
          `<a href="${url}">big.zip</a></p><blockquote>old</blockquote>`,
      1,
      '',
    ]);
    await does(removeChip, 'removed the Fastmail Files share for "big.zip"');
    same([chip(), body(), inputs], [null, '<p>Hello</p><blockquote>old</blockquote>', 2]);
  });

  test('The link stands above the quote of a plain body', options, async () => {
    start();
    const line = shared('a.zip');
    const check = async (before, after, removed) => {
      [inputs, nodes] = [0, []];
      plain(before);
      await share('a.zip');
      same([body(), inputs], [after, 1]);
      removeChip();
      same([body(), inputs], [removed, 2]);
    };
    await check('', line, '');
    await check('Hi\n\nW:\n> old\n-- \nR', `Hi\n\nW:\n\n${line}\n> old\n-- \nR`, 'Hi\n\nW:\n\n> old\n-- \nR');
    await check('> old', `${line}\n> old`, '> old');
    await check('no > quote\n', `no > quote\n\n\n${line}`, 'no > quote\n\n');
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

  test('Hostile names are text', options, async () => {
    start();
    for (const name
             of ['<img src=x onerror=attacked()>.zip', '"quotes" \'and\' `ticks` ] } \\',
                 'line\nbreak\r\n> quoted', 'x'.repeat(10000), 'inv\u202efdp.exe', 'constructor',
                 'a. The total size is fine']) {
      for (const open of [rich, plain]) {
        open();
        nodes = [];
        const what = `${open} ${name.slice(0, 99)}`;
        attach(name);
        const shown = await refuse(name);
        same(shown.lastChild.textContent.startsWith(`"${name}" is too large`), true, what);
        const isLabelled = () =>
            $('.v-ComposeAttachment-label').textContent === name && chip().dataset.ondrelFilesChip === name;
        same(isLabelled(), true, what);
        await advance(1000);
        finish(name);
        told();
        await advance(1500);
        same(
            [isLabelled(), $('img'), told().at(-1) === `ondrelFilesAutoShare: success, ${name}, `],
            [true, null, true], what);
        same(
            open === rich ? $('#body a').textContent === name && $('#body p').children.length === 1 :
                            body() === shared(name).replace(/\r\n/g, '\n'),
            true, what);
        removeChip();
        same([body(), chip()], ['', null], what);
      }
    }
  });

  const missing = [
    `${refusal}a`,
    'no recently captured File object matches "a" — cannot auto-share it, leaving Fastmail\'s own message as-is',
    'ondrelFilesAutoShare: error, a, no captured file',
  ];
  const taking = (action, ...expected) =>
      test(`The freshest file is taken, once: ${action}`, options, async () => {
        start();
        await action();
        told();
        const shown = await refuse('a');
        if (expected.length === 0) {
          same(lines(), missing);
          same(shown.textContent, ` File too large \n${textFor('a')}\n`, 'the words of the service stay');
        }
        told();
        await does(() => refuse('a'), ...missing);  // taken
        await advance(1000);
        same(uploads, expected);
      });
  const give = (type, Type, field) =>
      document.body.dispatchEvent(new Type(type, {bubbles: true, [field]: transfer('a', 4)}));
  taking(() => advance(15000, attach('a', 1)), 'a 1 true');
  taking(() => advance(15001, attach('a', 1)));
  taking(() => attach('b', 1));
  taking(async () => {
    attach('a', 1);
    await advance(10000);
    attach('a', 2);
    attach('b', 3);
    await advance(10000);
  }, 'a 2 true');
  taking(() => give('drop', DragEvent, 'dataTransfer'), 'a 4 true');
  taking(() => give('paste', ClipboardEvent, 'clipboardData'), 'a 4 true');
  taking(
      () => ['change', 'drop', 'paste'].forEach(
          (type) => document.body.dispatchEvent(new Event(type, {bubbles: true}))));

  test('The newest of a name is taken', options, async () => {
    start();
    attach('a', 1);
    attach('a', 2);
    await refuse('a');
    await advance(1000);
    same(uploads, ['a 2 true']);
  });

  const taken = [`${refusal}a`, 'processing oversized attachment: a'];
  const misshapen = (text) =>
      `modal titled "File too large" but message did not match the expected shape: ${text}`;
  const judging = (action, ...expected) =>
      test(`Only the refusal is rewritten: ${action}`, options, async () => {
        start();
        attach('a');
        told();
        await does(action, ...expected);
      });
  judging(async () => {
    const shown = modal('File too large', textFor('a'));
    const paragraph = shown.lastChild;
    paragraph.remove();
    await settle();
    shown.append(paragraph);  // complete now
  }, ...taken);
  judging(async () => {
    const shown = modal('Something else', textFor('a'));
    await settle();
    shown.firstChild.textContent = 'File too large';  // it was judged
  });
  for (const text of ['It is 99MB.', `${textFor('a')} Sorry.`, `Sorry. ${textFor('a')}`]) {
    judging(() => modal('File too large', text), misshapen(text));
  }
  judging(() => modal('File too large', textFor('a').replace('70', '2.5')), ...taken);  // another limit
  judging(
      () => refuse('a. The total size of attached files cannot exceed 1'),
      ...taken);  // the first infix counts
  judging(() => modal('File too large', textFor('a')).classList.remove('u-modal'));

  test('Files are handled one after the other', options, async () => {
    start();
    attach('a');
    attach('b');
    modal('File too large', textFor('a'));
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
    same(told().filter((line) => line.startsWith('ondrel')), [
      'ondrelFilesAutoShare: success, a, ',
      'ondrelFilesAutoShare: error, b, Error: timed out waiting for a share link to be generated for "b"',
      'ondrelFilesAutoShare: success, c, ',
      'ondrelFilesAutoShare: success, a, ',
    ]);
    same($$('.v-ComposeAttachment-label').map((label) => label.textContent), ['a', 'c']);
    same($$('style').length, 1);
    const [one, two, three] =
        ['a', 'b', 'c'].map((name) => name === 'b' ? sorry(name) : `Shared via Fastmail Files: ${name}`);
    same($$('#body p').map((paragraph) => paragraph.textContent), [one, two, three, one]);
  });

  const failing = (reason, prepare, milliseconds = 0, step = 0) =>
      test(`A failure is told in the body and the report: ${reason}: ${prepare}`, options, async () => {
        start();
        rich('<blockquote>q</blockquote>');
        attach('a');
        prepare();
        await refuse('a');
        const end = () => lines().filter((line) => /^(failed|ondrel)/.test(line));
        if (step > 0) {
          await advance(milliseconds - step);
          same([end(), chip() !== null], [[], true], 'too early');
        }
        await advance(step);
        const error = `Error: ${reason}`;
        same(end(), [`failed to auto-share "a": ${error}`, `ondrelFilesAutoShare: error, a, ${error}`]);
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
  failing(
      timedOut('the "My Files" root folder to sync'), () => FastMail.store.getAll = () => null.none, 10000,
      250);
  failing(timedOut('the upload of "a" to finish'), () => {}, 600750, 1000);
  const finishWithoutLink = () => setTimeout(() => finish('a'), 900, makesLinks = false);
  failing(timedOut('a share link to be generated for "a"'), finishWithoutLink, 11750, 250);

  test('Without an editor only the report goes out', options, async () => {
    start();
    delete window.FastMail;
    $('#body').innerHTML = '';
    attach('a');
    await refuse('a');
    await advance(9999);
    told();
    const none = `Error: ${noInternals}`;
    await does(
        () => advance(1),
        'also could not write the error message into compose for "a": Error: timed out waiting for the compose editor to ' +
            'be present',
        `ondrelFilesAutoShare: error, a, ${none}`);
  });

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
    const outcome = lines();
    same([outcome[3], outcome[4], outcome.at(-1), body()], [
      'could not show the uploading chip for "a": Error: could not find the attachment chip row',
      'loadApp("files") threw, continuing in case the classes are already available: Error: late',
      'ondrelFilesAutoShare: success, a, ',
      `${shared('a')}\n> q`,
    ]);
  });
}
