// A reply quotes just what was selected.
{
  const card = (id, body) => `<section class=v-MessageCard id=${id}><button class=s-reply><i>r</i></button>
    <button class=s-reply-all>a</button><b class=s-small-reply></b><div class=v-Message-body>${
      body}</div></section>`;
  // Injected twice, it works once.
  const page = (...cards) => ({
    scripts: ['replySelectionScript', 'replySelectionScript'],
    html: `${cards.join('')}<div id=compose></div>`,
  });
  const two = page(card('first', 'alpha'), card('second', 'beta'), `<p id=outside>text</p><input id=field>
    <div id=editable contenteditable=true><b>x</b></div><div class=v-MessageView id=loose>no card</div>`);
  const one = (body) => page(card('first', body));

  let inputs = 0;
  const selectNow = async (selector) => {
    const range = document.createRange();
    range.setStartBefore($(selector).firstChild);
    range.setEndAfter($(selector).lastChild);
    getSelection().removeAllRanges();
    getSelection().addRange(range);
    await new Promise((resolve) => requestAnimationFrame(resolve));
    await settle();
  };
  const select = async (selector = '#first .v-Message-body') => {
    await selectNow(selector);
    await advance(150);
  };
  const click = (selector = '.s-reply i') => $(selector).click();
  const compose = (html) => $('#compose').innerHTML = html;
  const plain = (text) => {
    compose('<textarea class=v-TextInput-input></textarea>');
    ownValue($('textarea'), text);
    $('textarea').oninput = () => ++inputs;
  };
  const editor = () => $('.v-RichText-input');
  const rich = async (html) => {
    compose(`<div class=v-RichText-input contenteditable=true>${html}</div>`);
    editor().oninput = () => ++inputs;
    await settle();
  };
  const change = () => settle(document.body.append(' '));

  const start = () => {
    same(told(), [`[Ondrel] reply-with-selection: script installed on ${location.href}`]);
    inputs = 0;
  };
  // What was logged, without its beginning and without what only tells of clicks and keys.
  const lines = () => told()
                          .map((line) => line.replace(/^\[Ondrel\] reply-with-selection: /, ''))
                          .filter((line) => !/^(click|keydown)/.test(line));
  const does = async (action, ...expected) => {
    await action();
    await settle();
    same(lines(), expected, String(action));
  };
  const captured = (text) =>
      `captured selection in [${location.href}] (${text.length} chars): ${text.slice(0, 60)}`;
  const other = ', but on a different message card than the selection';
  const armed = 'armed pending swap (reply clicked)';
  const arm = async (selector) => {
    await select();
    click(selector);
    same(lines().at(-1), armed);
  };
  const scheduled = 'rich editor + blockquote found, scheduling swap in 250ms';
  const applied = 'rich-text swap applied (nothing trailing the quote to protect)';
  const kept = (number) => `plain-text swap applied (preserved ${number} trailing line(s) after the quote)`;
  const nothingKept = 'plain-text swap applied (nothing trailing the quote to preserve)';

  const replacing = (selected, draft, expected, outcome) =>
      test(`A plain quote is replaced: ${selected}`, page(card('first', selected)), async () => {
        start();
        await select();
        click();
        plain(draft);
        await settle();
        same(lines().slice(1), [armed, outcome]);
        same([$('textarea').value, inputs], [expected, 1]);
      });
  const [x80, w66] = ['x'.repeat(80), 'w'.repeat(66)];
  const drafted = (quote) => `\n\nOn Monday B wrote:\n${quote}\n\n-- \nRobin`;
  const blocks = '<ul><li>a<br>b</li><li>c</li></ul><div><br></div><div><br></div><div><br></div><h2>d</h2>e';
  replacing('one', drafted('> all\n> of it'), drafted('> one'), kept(3));
  replacing('<p>first</p>\n<p>second</p>', '> a\n\n> b\n>c', '> first\n>\n> second\n', nothingKept);
  replacing(blocks, '> q', '> a\n> b\n> c\n>\n> d\n> e\n', nothingKept);
  replacing('a<!-- no --> <b>&lt;b&gt;</b> &amp; <i>c</i>', '> q\n\nRobin', '> a <b> & c\n\nRobin', kept(2));
  replacing(`a ${x80} b`, '> q', `> a\n> ${x80}\n> b\n`, nothingKept);
  replacing(`${w66}w x y`, '> q', `> ${w66}w\n> x y\n`, nothingKept);
  replacing(`${w66} x y`, '> q\n\n\n> r', `> ${w66} x\n> y\n\n\n> r`, kept(3));

  test('A swap happens once and leaves the caret at the top', one('one two'), async () => {
    start();
    await arm('.s-reply-all');
    const found = (number) => `found ${number} textarea(s), none matched the quote marker yet`;
    await does(() => plain('no > quote yet'), found(1));
    await does(
        () => $('#compose').prepend(element('<textarea class=v-TextInput-input>x</textarea>')), found(2));
    await does(() => {
      plain('\n> all');
      $('textarea').focus();
      $('textarea').focus = () => record.push('focus() undoes the swap');
    }, nothingKept);
    same(
        [$('textarea').value, $('textarea').selectionStart, $('textarea').selectionEnd],
        ['> one two\n', 0, 0]);
    await does(() => click(plain('> second reply')), 'reply clicked, no captured selection');
    same($('textarea').value, '> second reply');
  });

  const long = 'l'.repeat(61);
  const withLoose = page(
      card('first', 'alpha'), card('second', long),
      '<p id=outside>text</p><p class=v-MessageView id=loose>no card</p>',
      '<div class="v-MessageView-body v-MessageCard" id=empty><img></div>');
  test('Arming needs the message, in time', withLoose, async () => {
    start();
    const first = captured('alpha');
    const second = () => click('#second .s-reply');
    await does(async () => second(await select()), first, `reply clicked${other}`);
    const stale = 'reply clicked, captured selection too stale';
    await does(async () => click('#first .s-small-reply', await advance(30001)), stale);
    await does(async () => click('.s-reply i', await select(), await advance(30000)), first, armed);
    const where = `in [${location.href}]`;
    await does(
        () => select('#outside'), `selection made ${where} but not inside a recognized message container`);
    await does(
        () => select('#loose'), `selection in a message container ${where} but no ancestor .v-MessageCard`);
    await does(() => select('#empty'));
    // A selection that ends before its time doesn't count; one that is emptied afterwards still does.
    const selecting = select();
    getSelection().removeAllRanges();
    await does(async () => click('.s-reply i', await selecting), 'reply clicked, no captured selection');
    await does(async () => select('.v-Message-body', await selectNow('#outside'), await advance(149)), first);
    await does(async () => click('.s-reply i', getSelection().removeAllRanges(), await advance(1000)), armed);
    // The newest counts.
    await does(
        async () => second(await select(), await select('#second .v-Message-body')), first, captured(long),
        armed);
    await does(() => document.dispatchEvent(new MouseEvent('click')));
    await does(() => window.dispatchEvent(new Event('keydown')));
  });

  const fallback = 'no .v-MessageCard.is-focused on the page, falling back to the selection card';
  const modifiers = ['metaKey', 'ctrlKey', 'altKey', 'shiftKey'];
  const pressing = (focused, action, ...expected) =>
      test(`Keys arm unless they are meant otherwise: ${focused} ${action}`, two, async () => {
        start();
        let seen = 0;
        document.addEventListener('keydown', (event) => event.stopPropagation(), true);
        window.addEventListener('keydown', (event) => seen += event.defaultPrevented ? 100 : 1, true);
        await select();
        told();
        $(focused)?.classList.add('is-focused');
        await does(action, ...expected);
        same(seen > 0 && seen < 5, true, 'the key was taken away');
      });
  pressing(
      'none', () => key('a'), `reply shortcut (a): ${fallback}`,
      'armed pending swap (reply shortcut (a) pressed)');
  pressing('#first', () => key('R'), 'armed pending swap (reply shortcut (r) pressed)');
  pressing('#second', () => key('r'), `reply shortcut (r) pressed${other}`);
  pressing('#first', () => ['#field', '#editable b'].forEach((field) => key('r', $(field))));
  pressing('#first', () => modifiers.forEach((modifier) => key('r', document.body, {[modifier]: true})));
  pressing('#first', () => key('f'));

  test('Without a selection nothing is armed, and clicks and keys are told', two, async () => {
    start();
    await does(
        () => key('r'), `reply shortcut (r): ${fallback}`,
        'reply shortcut (r) pressed, no captured selection');
    key('r', document.body, {altKey: true});
    key('x');
    $('#first i').click();
    $('#outside').click();
    const [keyLine, , clickLine, ...rest] = told();
    same([/\br\b.*BODY.*false.*false.*true.*false/.test(keyLine), rest.length], [true, 1]);
    same(/\bI\b.*class ""/.test(clickLine), true, clickLine);
  });

  test(
      'A rich quote is replaced after the delay', one('<b>bold</b> &lt;i&gt; <img alt=\'q"\'>'), async () => {
        start();
        await arm();
        // Further changes in the delay schedule nothing more.
        await does(async () => {
          await rich('<p>On Monday:</p><blockquote>all</blockquote>');
          await change();
          await advance(249);
        }, scheduled);
        same($('blockquote').textContent, 'all');
        await does(() => advance(1), applied);
        same(
            [editor().innerHTML, inputs],
            ['<p>On Monday:</p><blockquote><b>bold</b> &lt;i&gt; <img alt="q&quot;"></blockquote>', 1]);
        await does(() => advance(1000, plain('> used up')));
        same($('textarea').value, '> used up');
      });

  for (const [then, outcome, html, inputsAtEnd] of [
           [() => {}, 'content after the quote is still present', 'mine</blockquote>text<p>-- R</p>', 1],
           // The application draws anew and loses the signature.
           [
             () => [editor().lastChild.remove(), editor().lastChild.remove()],
            'content after the quote went missing, restoring it', 'mine</blockquote>text<p>-- R</p>', 2
           ],
           [() => rich(''), 'blockquote no longer in the document, skipping', '', 1],
  ]) {
    test(`What follows a rich quote is protected: ${outcome}`, one('mine'), async () => {
      start();
      await arm();
      await does(async () => {
        await rich('<blockquote>all</blockquote>');
        await advance(200);
        editor().append('text', element('<p>-- R</p>'));  // in the delay
        await advance(50);
      }, scheduled, 'rich-text swap applied (captured 2 trailing node(s) to protect)');
      const {lastChild} = editor();
      await then();
      lastChild.textContent = 'changed afterwards';
      if (outcome.endsWith('present')) {
        lastChild.textContent = '-- R';
      }
      await does(() => advance(299));
      await does(() => advance(1), `rich-text tail check: ${outcome}`);
      same([editor().innerHTML.replace('<blockquote>', ''), inputs], [html, inputsAtEnd]);
    });
  }

  test('An editor that goes away is waited for', one('mine'), async () => {
    start();
    await arm();
    const loading = 'rich editor found, but no blockquote yet';
    await does(() => rich('<p>loading</p>'), loading);
    await does(() => rich('<blockquote>all</blockquote>'), scheduled);
    await does(
        () => advance(250, compose('')),
        'rich-text swap: blockquote gone by the time the delay elapsed, will retry');
    // Only what is a child of the editor is protected.
    await does(
        () => rich('<div><blockquote>again</blockquote><p>in</p></div><p>out</p>').then(() => advance(250)),
        scheduled, applied);
    same($('blockquote').textContent, 'mine');

    // No quote for half a minute: the next change gives up, and a later quote stays whole.
    compose('');
    await arm();
    await advance(30000);
    await does(() => rich('<p>empty</p>'), loading);
    await does(
        () => advance(1).then(change), loading,
        'pending swap expired without finding a matching compose editor');
    await does(() => advance(1000, editor().append(element('<blockquote>late</blockquote>'))));
    same($('blockquote').textContent, 'late');
  });

  test('An exception ends the swap', one('mine'), async () => {
    start();
    await arm();
    plain('> all');
    $('textarea').setSelectionRange = () => {
      throw new Error('no caret')
    };
    $('textarea').focus();
    await settle();
    const lost = told();
    same(lost.at(-1), '[Ondrel] reply-with-selection swap failed: Error: no caret');
    await does(() => plain('> whole'));
    await arm();
    await rich('<blockquote>all</blockquote>');
    Object.defineProperty($('blockquote'), 'innerHTML', {
      set() {
        throw new Error('no quote')
      }
    });
    told();
    await tells(() => advance(250), '[Ondrel] reply-with-selection rich-text swap failed: Error: no quote');
    await does(() => plain('> whole'));
  });

  test('A reply during the delay has a swap of its own', two, async () => {
    start();
    await arm('#first .s-reply');
    await rich('<blockquote>all</blockquote>');
    await advance(50);
    await select('#second .v-Message-body');
    told();
    await does(() => click('#second .s-reply'), armed);
    await does(() => advance(50), applied, scheduled);
    same(editor().textContent, 'alpha');
    await does(() => advance(250), applied);
    same(editor().textContent, 'beta');
  });

  const framed = page(card('first', 'outer'), '<iframe src=/frame></iframe>');
  test('Each frame is on its own', {...framed, frame: card('first', 'framed')}, async () => {
    same(told().map((line) => line.replace(/.*script installed on .*\//, '')), ['page', 'frame']);
    const {contentWindow: frame, contentDocument} = $('iframe');
    frame.getSelection().selectAllChildren(contentDocument.querySelector('.v-Message-body'));
    await new Promise((resolve) => requestAnimationFrame(resolve));
    await frame.settle();
    await frame.advance(150);
    contentDocument.querySelector('.s-reply').click();
    same(lines(), [`captured selection in [${frame.location}] (6 chars): framed`, armed]);
    await does(() => plain('> outer quote'));
    same($('textarea').value, '> outer quote');
  });
}
