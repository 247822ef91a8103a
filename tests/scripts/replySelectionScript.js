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
  const long = 'l'.repeat(61);
  const two = page(card('first', 'alpha'), card('second', long), `<p id=outside>text</p><input id=field>
    <div id=editable contenteditable=true><b>x</b></div><div class=v-MessageView id=loose>no card</div>
    <div class="v-MessageView-body v-MessageCard" id=empty><img></div>`);
  const one = (body) => page(card('first', body));

  // The script's lines without their beginning, and without what only tells of clicks and keys.
  const prefix = '[Ondrel] reply-with-selection';
  const hints = /: (click |keydown )/;
  shorten = (line) => hints.test(line) ? null : line.replace(`${prefix}: `, '');
  const start = () => same(told(), [`script installed on ${location.href}`]);
  const captured = (text) =>
      `captured selection in [${location.href}] (${text.length} chars): ${text.slice(0, 60)}`;
  const other = ', but on a different message card than the selection';
  const armed = 'armed pending swap (reply clicked)';
  const loading = 'rich editor found, but no blockquote yet';
  const scheduled = 'rich editor + blockquote found, scheduling swap in 250ms';
  const applied = 'rich-text swap applied (nothing trailing the quote to protect)';
  const nothingKept = 'plain-text swap applied (nothing trailing the quote to preserve)';

  const select = async (selector = '#first .v-Message-body', milliseconds = 150) => {
    const range = document.createRange();
    range.selectNodeContents($(selector));
    getSelection().removeAllRanges();
    getSelection().addRange(range);
    await painted();
    await advance(milliseconds);
  };
  const click = (selector = '.s-reply i') => $(selector).click();
  const arm = async (selector) => {
    await select();
    click(selector);
    same(told().at(-1), armed);
  };

  let inputs = 0;
  const open = (html) => {
    $('#compose').innerHTML = html;
    $('#compose').oninput = () => ++inputs;
    return settle();
  };
  const plain = (text) => {
    open('<textarea class=v-TextInput-input></textarea>');
    ownValue($('textarea'), text);
  };
  const rich = (html) => open(`<div class=v-RichText-input contenteditable=true>${html}</div>`);
  const editor = () => $('.v-RichText-input');
  const quote = () => $('blockquote').textContent;

  const replacing = (selected, draft, expected, keptLines = 0) =>
      test(`A plain quote is replaced: ${selected}`, page(card('first', selected)), async () => {
        await arm();
        await tells(
            () => plain(draft),
            keptLines ? `plain-text swap applied (preserved ${keptLines} trailing line(s) after the quote)` :
                        nothingKept);
        same([$('textarea').value, inputs], [expected, 1]);
      });
  const [x80, w66] = ['x'.repeat(80), 'w'.repeat(66)];
  const drafted = (quoted) => `\n\nOn Monday B wrote:\n${quoted}\n\n-- \nRobin`;
  const blocks = '<ul><li>a<br>b</li><li>c</li></ul><div><br></div><div><br></div><div><br></div><h2>d</h2>e';
  replacing('one', drafted('> all\n> of it'), drafted('> one'), 3);
  replacing('<p>first</p>\n<p>second</p>', '> a\n\n> b\n>c', '> first\n>\n> second\n');
  replacing(blocks, '> q', '> a\n> b\n> c\n>\n> d\n> e\n');
  replacing('a<!-- no --> <b>&lt;b&gt;</b> &amp; <i>c</i>', '> q\n\nRobin', '> a <b> & c\n\nRobin', 2);
  replacing(`a ${x80} b`, '> q', `> a\n> ${x80}\n> b\n`);
  replacing(`${w66}w x y`, '> q', `> ${w66}w\n> x y\n`);
  replacing(`${w66} x y`, '> q\n\n\n> r', `> ${w66} x\n> y\n\n\n> r`, 3);

  test('A swap happens once and leaves the caret at the top', one('one two'), async () => {
    start();
    await arm('.s-reply-all');
    const found = (number) => `found ${number} textarea(s), none matched the quote marker yet`;
    await tells(() => plain('no > quote yet'), found(1));
    await tells(
        () => $('#compose').prepend(element('<textarea class=v-TextInput-input>x</textarea>')), found(2));
    await tells(() => {
      plain('\n> all');
      $('textarea').focus();
      $('textarea').focus = () => record.push('focus() undoes the swap');
    }, nothingKept);
    const {value, selectionStart, selectionEnd} = $('textarea');
    same([value, selectionStart, selectionEnd], ['> one two\n', 0, 0]);
    await tells(() => click(plain('> second reply')), 'reply clicked, no captured selection');
    same($('textarea').value, '> second reply');
  });

  test('Arming needs the message, in time', two, async () => {
    start();
    const first = captured('alpha');
    const second = () => click('#second .s-reply');
    await tells(async () => second(await select()), first, `reply clicked${other}`);
    const stale = 'reply clicked, captured selection too stale';
    await tells(async () => click('#first .s-small-reply', await advance(30001)), stale);
    await tells(async () => click('.s-reply i', await select(), await advance(30000)), first, armed);
    const where = `in [${location.href}]`;
    await tells(
        () => select('#outside'), `selection made ${where} but not inside a recognized message container`);
    await tells(
        () => select('#loose'), `selection in a message container ${where} but no ancestor .v-MessageCard`);
    await tells(() => select('#empty'));
    // A selection that ends before its time doesn't count; one that is emptied afterwards still does.
    const selecting = select();
    getSelection().removeAllRanges();
    await tells(async () => click('.s-reply i', await selecting), 'reply clicked, no captured selection');
    await tells(async () => select('.v-Message-body', 150, await select('#outside', 149)), first);
    await tells(
        async () => click('.s-reply i', getSelection().removeAllRanges(), await advance(1000)), armed);
    // The newest counts.
    await tells(
        async () => second(await select(), await select('#second .v-Message-body')), first, captured(long),
        armed);
    await tells(() => document.dispatchEvent(new MouseEvent('click')));
    await tells(() => window.dispatchEvent(new Event('keydown')));
  });

  const fallback = 'no .v-MessageCard.is-focused on the page, falling back to the selection card';
  const modifiers = ['metaKey', 'ctrlKey', 'altKey', 'shiftKey'];
  const pressing = (focused, action, ...expected) =>
      test(`Keys arm unless they are meant otherwise: ${focused} ${action}`, two, async () => {
        let seen = 0;
        document.addEventListener('keydown', (event) => event.stopPropagation(), true);
        window.addEventListener('keydown', (event) => seen += event.defaultPrevented ? 100 : 1, true);
        await select();
        told();
        $(focused)?.classList.add('is-focused');
        await tells(action, ...expected);
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
    await tells(
        () => key('r'), `script installed on ${location.href}`, `reply shortcut (r): ${fallback}`,
        'reply shortcut (r) pressed, no captured selection');
    key('r', document.body, {altKey: true});
    key('x');
    click();
    click('#outside');
    const [keyLine, , clickLine, ...rest] = record.splice(0);
    const asExpected =
        [/\br\b.*BODY.*false.*false.*true.*false/.test(keyLine), /\bI\b.*class ""/.test(clickLine)];
    same([...asExpected, rest.length], [true, true, 1]);
  });

  test('A rich quote is replaced in a while', one('<b>bold</b> &lt;i&gt; <img alt=\'q"\'>'), async () => {
    await arm();
    // Further changes in the delay schedule nothing more.
    await tells(async () => {
      await rich('<p>On Monday:</p><blockquote>all</blockquote>');
      show('<p>change</p>');
      await advance(249);
    }, scheduled);
    same(quote(), 'all');
    await tells(() => advance(1), applied);
    const replaced = '<p>On Monday:</p><blockquote><b>bold</b> &lt;i&gt; <img alt="q&quot;"></blockquote>';
    same([editor().innerHTML, inputs], [replaced, 1]);
    await tells(() => advance(1000, plain('> used up')));
    same($('textarea').value, '> used up');
  });

  const protecting = (outcome, then, html, inputsAtEnd) =>
      test(`What follows a rich quote is protected: ${outcome}`, one('mine'), async () => {
        await arm();
        await tells(async () => {
          await rich('<blockquote>all</blockquote>');
          await advance(200);
          editor().append('text', element('<p>-- R</p>'));  // in the delay
          await advance(50);
        }, scheduled, 'rich-text swap applied (captured 2 trailing node(s) to protect)');
        await then(editor().lastChild);
        await tells(() => advance(299));
        await tells(() => advance(1), `rich-text tail check: ${outcome}`);
        same([editor().innerHTML, inputs], [html, inputsAtEnd]);
      });
  const whole = '<blockquote>mine</blockquote>text<p>-- R</p>';
  protecting('content after the quote is still present', () => {}, whole, 1);
  // The application draws anew and loses the signature.
  protecting('content after the quote went missing, restoring it', (signature) => {
    editor().replaceChildren($('blockquote'));
    signature.textContent = 'changed afterwards';
  }, whole, 2);
  protecting('blockquote no longer in the document, skipping', () => rich(''), '', 1);

  test('An editor that goes away is waited for', one('mine'), async () => {
    await arm();
    await tells(() => rich('<p>loading</p>'), loading);
    await tells(() => rich('<blockquote>all</blockquote>'), scheduled);
    await tells(
        () => advance(250, open('')),
        'rich-text swap: blockquote gone by the time the delay elapsed, will retry');
    // Only what is a child of the editor is protected.
    await tells(
        () => rich('<div><blockquote>again</blockquote><p>in</p></div><p>out</p>').then(() => advance(250)),
        scheduled, applied);
    same(quote(), 'mine');

    // No quote for half a minute: the next change gives up, and a later quote stays whole.
    open('');
    await arm();
    await advance(30000);
    await tells(() => rich('<p>empty</p>'), loading);
    await tells(
        () => advance(1).then(() => show('<p>change</p>')), loading,
        'pending swap expired without finding a matching compose editor');
    await tells(() => advance(1000, editor().append(element('<blockquote>late</blockquote>'))));
    same(quote(), 'late');
  });

  test('An exception ends the swap', one('mine'), async () => {
    const fail = () => {
      throw new Error('no');
    };
    await arm();
    plain('> all');
    $('textarea').setSelectionRange = fail;
    await tells(() => $('textarea').focus(), `${prefix} swap failed: Error: no`);
    await tells(() => plain('> whole'));
    await arm();
    await rich('<blockquote>all</blockquote>');
    $('blockquote').replaceChildren = fail;
    await tells(() => advance(250), scheduled, `${prefix} rich-text swap failed: Error: no`);
    await tells(() => plain('> whole'));
  });

  // A message as the application shows it: nodes that came out of its cleaning, in which nothing runs. `bad`
  // and javascript: stand where only text stands; a parser that reads such a message's markup again takes
  // some of them for what they say.
  const bad = '<img src=/none onerror=ran()>';
  const hostile = [
    // Told apart by a parser only when it reads for the second time: nested forms, foreign elements, raw
    // text.
    `<form><math><mtext></form><form><mglyph><style></math>${
        bad}</style></mglyph></form></mtext></math></form>`,
    `<math><mtext><table><mglyph><style><!--</style><img title="--&gt;${bad.replace('<', '&lt;')}">`,
    `<svg><style><b title="</style>${bad}">`,
    `<svg></p><style><g title="</style>${bad}">`,
    `<math><annotation-xml encoding=text/html><style><b title="</style>${bad}">`,
    `<form><math><mtext></form><form><mglyph><svg><mtext><textarea><path id="</textarea>${bad}">`,
    `<noscript><p title="</noscript>${bad}">`,
    `<template><p title="</template>${bad}"></template><template>${bad}</template>`,
    `<title>&lt;/title>${bad}</title><textarea>&lt;/textarea>${bad}</textarea>`,
    `<select><option>${bad}<template><style></select>${bad}</style></template></select>`,
    `<xmp><p title="</xmp>${bad}"></xmp><noembed>${bad}</noembed><noframes>${bad}</noframes>`,
    `<iframe>${bad}</iframe><svg><![CDATA[><image xlink:href="]]>${bad}"]]></svg><!-- --!>${bad} -->`,
    `<plaintext>${bad}`,
    // What acts as it stands, since the application trusted that nobody takes it out of its place.
    `<b onclick=ran()>x</b><p is=x-y onfocus=ran() tabindex=0 contenteditable=false>y</p>`,
    `<a href="java&#10;script:ran()">x</a><a href=" data:text/html,x">y</a><img src=javascript:ran()>`,
    `<svg><a xlink:href=javascript:ran()><text>x</text><animate attributeName=href to=javascript:ran() />`,
    `<svg><use href="data:image/svg+xml,<svg id=x/>#x"/><set attributeName=onclick to=ran() /></svg>`,
    `<math href=javascript:ran()><mi xlink:href=javascript:ran()>x</mi></math>`,
    `<iframe srcdoc="<p onclick=parent.ran()>"></iframe><object data=/none></object><embed src=/none>`,
    `<form action=//x><button form=y formaction=javascript:ran()>x</button><input name=firstChild></form>`,
    `<form><input name=nextSibling><input name=nodeType><input name=attributes></form><form>x</form>`,
    `<base href=//x><meta http-equiv=refresh content="0;javascript:ran()"><link rel=stylesheet href=/none>`,
    `<script>ran()</script><style>*{display:none}</style><x-y onclick=ran()>x</x-y><td onclick=ran()>y</td>`,
  ];

  test('Nothing of a message acts in the reply, nor in what a parser makes of it', one(''), async () => {
    const hits = [];
    const ownNodes = new WeakSet();  // the message's, which may do as the application lets them
    window.ran = () => ownNodes.has(window.event?.target) || hits.push('ran');
    const acts = (element) => {
      const bits = [...element.attributes].map(({name, value}) => `${name}=${value}`);
      const isBad = (bit) =>
          /^(on|srcdoc|form|is=|id|name|class|contenteditable|tabindex|autofocus)/i.test(bit) ||
          /^[\w:]+=\s*(j\s*a\s*v\s*a|data:text)/i.test(bit);
      const tags =
          /^(script|style|template|i?frame|object|embed|base|meta|link|form|input|button|x-y|svg|math)$/i;
      return tags.test(element.localName) || bits.some(isBad);
    };
    const acting = () => $$('blockquote *').filter(acts).map((element) => element.outerHTML);
    for (const markup of hostile) {
      const {body} = new DOMParser().parseFromString(`shown ${markup}`, 'text/html');
      body.querySelectorAll('*').forEach((element) => ownNodes.add(element));
      $('.v-Message-body').replaceChildren(...body.childNodes);
      await arm();
      await rich('<blockquote>all</blockquote>');
      await advance(250);
      same([acting(), quote().slice(0, 5)], [[], 'shown'], markup);
      editor().innerHTML = editor().innerHTML;
      same(acting(), [], `read again: ${markup}`);
    }
    await until(() => $$('blockquote img').every(({complete}) => complete));
    same(hits, []);
  });

  const keeping = (html, expected, text) =>
      test(`The reply shows what was seen: ${text}`, one(html), async () => {
        await arm();
        await rich('<blockquote>all</blockquote>');
        await advance(250);
        same(quote() && $('blockquote').innerHTML, expected);
        await arm();
        await tells(() => plain('> all'), nothingKept);
        same($('textarea').value, text.replace(/^/gm, '> ') + '\n');
      });
  const unchanged =
      '<h2 style="color: red">a</h2><p dir="rtl">b <a href="https://x.example/?a=1&amp;b=2">c</a> ' +
      '<img src="data:image/gif;base64,R0lG" alt="d" width="9"></p><ol start="4"><li>e</li></ol>';
  keeping(unchanged, unchanged, 'a\nb c \ne');
  keeping(
      '<div data-ondrel-orphan-banner=1>1 hidden</div><mark data-ondrel-hid=7>a</mark> <mark>b</mark>' +
          '<x-y><svg><text>c</text></svg></x-y><style>p {}</style> <button>d</button>',
      'a <mark>b</mark>c d', 'a bc d');

  test(
      'A part of a table stays one, a part of a text keeps its ends', one(`<table><tr><td>a<td><b>bcd</b>
      <td>e</table>`),
      async () => {
        await settle();
        const [, second] = $$('td');
        getSelection().setBaseAndExtent(second.firstChild.firstChild, 1, second.nextElementSibling, 0);
        await painted();
        await advance(150);
        click();
        await rich('<blockquote>all</blockquote>');
        await advance(250);
        same(
            $('blockquote').innerHTML.replace(/\s*\n\s*/g, ''),
            '<table><tbody><tr><td><b>cd</b></td><td></td></tr></tbody></table>');
      });

  test('A reply during the delay has a swap of its own', two, async () => {
    await arm('#first .s-reply');
    await rich('<blockquote>all</blockquote>');
    await advance(50);
    await select('#second .v-Message-body');
    told();
    await tells(() => click('#second .s-reply'), armed);
    await tells(() => advance(50), applied, scheduled);
    same(quote(), 'alpha');
    await tells(() => advance(250), applied);
    same(quote(), long);
  });

  const framed = page(card('first', 'outer'), '<iframe src=/frame></iframe>');
  test('Each frame is on its own', {...framed, frame: card('first', 'framed')}, async () => {
    same(told().map((line) => line.replace(/.*script installed on .*\//, '')), ['page', 'frame']);
    const {contentWindow: frame, contentDocument} = $('iframe');
    frame.getSelection().selectAllChildren(contentDocument.querySelector('.v-Message-body'));
    await painted(frame);
    await frame.advance(150);
    contentDocument.querySelector('.s-reply').click();
    same(told(), [`captured selection in [${frame.location}] (6 chars): framed`, armed]);
    await tells(() => plain('> outer quote'));
    same($('textarea').value, '> outer quote');
  });
}
