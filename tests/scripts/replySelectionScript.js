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

  // Of the script's lines those that say what has become of the selection.
  const [armed, replaced] = ['armed', 'swap applied'];
  shorten = (line) => line.match(/armed|swap applied/)?.[0] ?? null;

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
    told();
    await tells(() => click(selector), armed);
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

  const replacing = (selected, draft, expected) =>
      test(`A plain quote is replaced: ${selected}`, page(card('first', selected)), async () => {
        await arm();
        await tells(() => plain(draft), replaced);
        same([$('textarea').value, inputs], [expected, 1]);
      });
  const [x80, w66] = ['x'.repeat(80), 'w'.repeat(66)];
  const drafted = (quoted) => `\n\nOn Monday B wrote:\n${quoted}\n\n-- \nRobin`;
  const blocks = '<ul><li>a<br>b</li><li>c</li></ul><div><br></div><div><br></div><div><br></div><h2>d</h2>e';
  replacing('one', drafted('> all\n> of it'), drafted('> one'));
  replacing('<p>first</p>\n<p>second</p>', '> a\n\n> b\n>c', '> first\n>\n> second\n');
  replacing(blocks, '> q', '> a\n> b\n> c\n>\n> d\n> e\n');
  replacing(`a ${x80} b`, '> q', `> a\n> ${x80}\n> b\n`);
  replacing(`${w66} x y`, '> q\n\n\n> r', `> ${w66} x\n> y\n\n\n> r`);
  // White space is what it is on the page.
  replacing('\n  <div> a\n   b <i> c</i>\n</div>\n  d<div>e</div>', '> q', '> a b c\n> d\n> e\n');
  replacing('<pre>a\n  b\n\n  c</pre> \n d', '> q', '> a\n>   b\n>\n>   c\n> d\n');
  replacing(
      '<style>.w {white-space: pre-wrap}</style><p class=w>a\n  <b>b</b></p><p style="white-space:pre-line">c  c\n d',
      '> q', '> a\n>   b\n>\n> c c\n> d\n');

  test('A swap happens once and leaves the caret at the top', one('one two'), async () => {
    await arm('.s-reply-all');
    plain('no > quote yet');
    await settle();
    await tells(() => {
      plain('\n> all');
      $('textarea').focus();
      $('textarea').focus = () => same('focus() undoes the swap', '');
    }, replaced);
    const {value, selectionStart, selectionEnd} = $('textarea');
    same([value, selectionStart, selectionEnd], ['> one two\n', 0, 0]);
    await tells(() => click(undefined, plain('> second reply')));
    same($('textarea').value, '> second reply');
  });

  test('Arming needs the message, in time', two, async () => {
    const second = () => click('#second .s-reply');
    await tells(async () => second(await select()));
    await tells(async () => click('#first .s-small-reply', await advance(30001)));
    await tells(async () => click('.s-reply i', await select(), await advance(30000)), armed);
    for (const nothing of ['#outside', '#loose', '#empty']) {
      await tells(async () => click('.s-reply i', await select(nothing)));
    }
    // A selection that ends before its time doesn't count; one that is emptied afterwards still does.
    const selecting = select();
    getSelection().removeAllRanges();
    await tells(async () => click('.s-reply i', await selecting));
    await select('#first .v-Message-body', 150, await select('#outside', 149));
    await tells(
        async () => click('.s-reply i', getSelection().removeAllRanges(), await advance(1000)), armed);
  });

  const modifiers = ['metaKey', 'ctrlKey', 'altKey', 'shiftKey'];
  const pressing = (focused, action, ...expected) =>
      test(`Keys arm unless they are meant otherwise: ${focused} ${action}`, two, async () => {
        let seen = 0;
        document.addEventListener('keydown', (event) => event.stopPropagation(), true);
        window.addEventListener('keydown', (event) => seen += event.defaultPrevented ? 100 : 1, true);
        await select();
        $(focused)?.classList.add('is-focused');
        await tells(action, ...expected);
        same(seen > 0 && seen < 5, true, 'the key was taken away');
      });
  pressing('none', () => key('a'), armed);
  pressing('#first', () => key('R'), armed);
  pressing('#second', () => key('r'));
  pressing('#first', () => ['#field', '#editable b'].forEach((field) => key('r', $(field))));
  pressing('#first', () => modifiers.forEach((modifier) => key('r', document.body, {[modifier]: true})));

  test('A rich quote is replaced in a while', one('<b>bold</b> &lt;i&gt; <img alt=\'q"\'>'), async () => {
    await arm();
    // Further changes in the delay schedule nothing more.
    await rich('<p>On Monday:</p><blockquote>all</blockquote>');
    await tells(() => advance(249, show('<p>change</p>')));
    same(quote(), 'all');
    await tells(() => advance(1), replaced);
    const html = '<p>On Monday:</p><blockquote><b>bold</b> &lt;i&gt; <img alt="q&quot;"></blockquote>';
    same([editor().innerHTML, inputs], [html, 1]);
    await tells(() => advance(1000, plain('> used up')));
    same($('textarea').value, '> used up');
  });

  // As the user does it: the engine's own events tell of it.
  const type = (node, text) => {
    getSelection().collapse(node, node.childNodes.length);
    document.execCommand('insertText', false, text);
  };
  const protecting = (what, then, html, inputsAtEnd) =>
      test(`What follows a rich quote is protected: ${what}`, one('mine'), async () => {
        await arm();
        await rich('<p>W:</p><blockquote>all</blockquote>');
        await advance(200);
        editor().append('text', element('<p>-- R</p>'));  // in the delay
        await tells(() => advance(50), replaced);
        await then(editor().lastChild);
        await advance(300);
        same([editor().innerHTML, inputs], [html, inputsAtEnd]);
      });
  const whole = '<p>W:</p><blockquote>mine</blockquote>text<p>-- R</p>';
  // The application draws anew and loses the signature.
  protecting('lost', (last) => {
    editor().replaceChildren(...[...editor().childNodes].slice(0, 2));
    last.textContent = 'changed afterwards';
  }, whole, 2);
  protecting('deleted by the user', () => {
    editor().replaceChildren(...[...editor().childNodes].slice(0, 2));
    press(editor(), 'input', {}, InputEvent);
  }, '<p>W:</p><blockquote>mine</blockquote>', 2);

  test('An editor that goes away is waited for', one('mine'), async () => {
    await arm();
    await rich('<p>loading</p>');
    await rich('<blockquote>all</blockquote>');
    await tells(() => advance(250, open('')));
    // Only what is a child of the editor is protected.
    await tells(
        () => rich('<div><blockquote>again</blockquote><p>in</p></div><p>out</p>').then(() => advance(250)),
        replaced);
    same(quote(), 'mine');

    // No quote for half a minute: the next change gives up, and a later quote stays whole.
    open('');
    await arm();
    await advance(30001, rich('<p>empty</p>'));
    await settle(show('<p>change</p>'));
    await tells(() => advance(1000, editor().append(element('<blockquote>late</blockquote>'))));
    same(quote(), 'late');
  });

  // The quote that the user has made is the user's: in a letter that was there before, in one where he has
  // written before there was a quote, and where he has changed it.
  const own = '<blockquote>my own</blockquote>';
  const keepingOwn = (what, action, ...expected) =>
      test(`What the user has quoted stays: ${what}`, one('mine'), async () => {
        if (expected.length > 0) {
          await rich(own);
        }
        await arm();
        await action();
        show('<p>change</p>');
        await tells(() => advance(1000), ...expected);
        same(($('textarea')?.value ?? quote()).includes('my own'), true);
      });
  keepingOwn('another letter, beside the reply', () => {
    show('<div contenteditable=true class=v-RichText-input><blockquote>all</blockquote></div>');
  }, replaced);
  keepingOwn('plain, typed', async () => {
    await settle(plain(''));
    $('textarea').focus();
    document.execCommand('insertText', false, '> my own');
  });
  keepingOwn('pasted by the application', async () => {
    await rich('<p>x</p>');
    editor().append(element(own), press(editor(), 'paste', {}, ClipboardEvent));
  });
  keepingOwn('typed into the quote in the delay', async () => {
    await rich('<blockquote>all</blockquote>');
    type($('blockquote'), ' my own');
  });
  test('Words beside the quote leave it the application\'s', one('mine'), async () => {
    await arm();
    await rich('<p>x</p><blockquote>all</blockquote>');
    type($('#compose p'), 'yes');
    await tells(() => advance(250), replaced);
    same(editor().textContent, 'xyesmine');
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
    `<svg></p><style><g title="</style>${bad}">`,
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
        open('');
        await arm();
        await settle(plain('> all'));
        same($('textarea').value, text.replace(/^/gm, '> ').replace(/> $/gm, '>') + '\n');
      });
  const unchanged =
      '<h2 style="color: red">a</h2><p dir="rtl">b <a href="https://x.example/?a=1&amp;b=2">c</a> ' +
      '<img src="data:image/gif;base64,R0lG" alt="d" width="9"></p><ol start="4"><li>e</li></ol>';
  keeping(unchanged, unchanged, 'a\nb c\n\ne');
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
    await tells(() => click('#second .s-reply'), armed);
    await tells(() => advance(50), replaced);
    same(quote(), 'alpha');
    await rich('<blockquote>all</blockquote>');
    await tells(() => advance(250), replaced);
    same(quote(), long);
  });

  const framed = page(card('first', 'outer'), '<iframe src=/frame></iframe>');
  test('Each frame is on its own', {...framed, frame: card('first', 'framed')}, async () => {
    const {contentWindow: frame, contentDocument} = $('iframe');
    contentDocument.write(card('first', 'written'));  // which takes all listeners
    contentDocument.close();
    await settle();
    frame.getSelection().selectAllChildren(contentDocument.querySelector('.v-Message-body'));
    await painted(frame);
    await frame.advance(150);
    await tells(() => contentDocument.querySelector('.s-reply').click(), armed);
    await tells(() => plain('> outer quote'));
    same($('textarea').value, '> outer quote');
  });
}
