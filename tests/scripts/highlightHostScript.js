// Highlights are made, painted, told of and taken away.
{
  // Injected twice, it works once.
  const scripts = ['highlightHostScript', 'highlightHostScript'];
  const page = (...bodies) => ({scripts, html: bodies.join('')});
  const body = (html, id = 'body') => `<div class=v-Message-body id=${id}>${html}</div>`;
  const card = (html, classes = '') => `<section class="v-MessageCard ${classes}">${html}</section>`;
  const anchor = (id, exact, occurrenceIndex = 0, more = {}) => ({
    id,
    exact,
    prefix: '',
    suffix: '',
    occurrenceIndex,
    threadId: 'T1',
    createdAt: 1.5,
    ...more,
  });
  const push = (...anchorsByContainer) => __ondrelApplyHighlights(anchorsByContainer);
  const reports = (count, focused = '') => `ondrelHighlightContainersChanged: ${count}, ${focused}`;
  const ready = 'ondrelHighlightHostReady';
  const start = (count = 1) => same(told(), [reports(count), ready]);
  const lost = (id) => `[Ondrel] highlight: text not found for ${id}`;

  // The marks, "id:text", each with its offset in its container.
  const marks = (container = $('#body')) => [...container.querySelectorAll('mark')].map((mark) => {
    const before = document.createRange();
    before.setStart(container, 0);
    before.setEndBefore(mark);
    return `${mark.dataset.ondrelHid}@${before.toString().length}:${mark.textContent}`;
  });
  const banners = () =>
      $$('[data-ondrel-orphan-banner]')
          .map((banner) => [banner.parentElement.id, banner.dataset.ondrelOrphanIds, banner.textContent]);
  const hidden = (count) =>
      `${count} highlight(s) hidden — open the other emails in this thread to see them, or click to clear`;
  const button = () => $$('body > div').find((div) => div.textContent === 'Highlight');

  // From one point to another, each a text in the page, counted from there.
  const pointAt = (text, offset = 0) => {
    const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
    while (walker.nextNode()) {
      const at = walker.currentNode.data.indexOf(text);
      if (at >= 0) {
        return [walker.currentNode, at + offset];
      }
    }
    throw new Error(`no text "${text}"`);
  };
  const painted = async () => {
    await new Promise((resolve) => requestAnimationFrame(resolve));
    await settle();
  };
  const select = async (from, to, milliseconds = 150) => {
    getSelection().setBaseAndExtent(...from, ...to);
    await painted();
    await advance(milliseconds);
  };
  const press = (target, type = 'mousedown') => {
    const event = new MouseEvent(type, {bubbles: true, cancelable: true});
    target.dispatchEvent(event);
    return event.defaultPrevented;
  };
  // The anchor that pressing the button has posted, with its id replaced by "new".
  const uuid = /^[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}$/;
  const posted = (line, containerIndex = 0) => {
    const [, json, index] = /^ondrelHighlightCreate: (.*), (-?\d+)$/s.exec(line) ?? [];
    same(index, String(containerIndex), line);
    const made = JSON.parse(json);
    same(
        [uuid.test(made.id), Object.keys(made)],
        [true, ['id', 'exact', 'prefix', 'suffix', 'occurrenceIndex']]);
    return made;
  };
  const highlight = async (from, to) => {
    await select(from, to);
    same(press(button()), true);
    same([button(), getSelection().rangeCount], [undefined, 0]);
    return posted(told().at(-1));
  };
  // As the application draws a message again.
  const redraw = async (html) => {
    $('#body').innerHTML = html;
    await advance(300);
  };

  // --- Painting. ---

  const painting = (html, text, occurrenceIndex, ...expected) => test(
      `A saved highlight is painted: ${text} ${occurrenceIndex} in ${html.slice(0, 60)}`, page(body(html)),
      () => {
        start();
        const [before, elements] = [$('#body').textContent, $$('#body *')];
        push([anchor('h', text, occurrenceIndex)]);
        same(marks(), expected.map((mark) => `h@${mark}`));
        push([anchor('h', text, occurrenceIndex)]);
        same([marks().length, banners(), told()], [expected.length, [], []], 'once');
        same($('#body').textContent, before);
        same(elements.every((element) => element.isConnected), true, 'what the application has made stays');
      });
  painting('one two one two', 'two', 1, '12:two');
  painting('aaaa', 'aa', 1, '1:aa');
  painting('aaaa', 'aa', 2, '2:aa');
  painting('abababab', 'abab', 2, '4:abab');
  painting('aabaabaaab', 'aabaaab', 0, '3:aabaaab');
  painting(
      'see <a href=/x>this <b>link</b></a> now', 'e this link n', 0, '2:e ', '4:this ', '9:link', '13: n');
  painting('<p>end</p><p>start</p>', 'start', 0, '3:start');
  painting('<p>end</p><p>start</p>', 'end', 0, '0:end');
  painting('x<!-- no --><b></b>y', 'xy', 0, '0:x', '1:y');
  painting('a<style>b {}</style>c', 'ab {}c', 0, '0:a', '1:b {}', '5:c');
  painting('π 👩🏽‍🚀 ü', '👩🏽‍🚀', 0, '2:👩🏽‍🚀');

  test('A mark looks as it should', page(body('one')), () => {
    push([anchor('h', 'one')]);
    same(
        [...$('mark').attributes].map(({value}) => value).sort(),
        ['background-color: rgb(255, 224, 102); border-radius: 2px; cursor: pointer;', 'h']);
  });

  test('Highlights overlap, in the order they came in', page(body('one two <i>three</i> four')), () => {
    push([anchor('a', 'two three'), anchor('b', 'o three f'), anchor('c', 'three'), anchor('a', 'one')]);
    // The later inside the earlier.
    same(
        $('#body').innerHTML.replace(/<mark [^>]*hid="(.)"[^>]*>/g, '[$1 ').replaceAll('</mark>', ']'),
        'one [a tw[b o ]]<i>[a [b [c three]]]</i>[b  f]our');
  });

  test('Split text nodes are one text', page(body('')), () => {
    for (const part of ['', 'al', '', 'p', 'ha al', 'pha', '']) {
      $('#body').append(document.createTextNode(part));
    }
    push([anchor('two', 'alpha', 1), anchor('one', 'alpha', 0), anchor('whole', 'alpha alpha')]);
    same(
        marks().filter((mark) => !mark.startsWith('whole')).sort(),
        ['one@0:al', 'one@2:p', 'one@3:ha', 'two@6:al', 'two@8:pha']);
    same(marks().filter((mark) => mark.startsWith('whole')).length, 6);
  });

  test(
      'Only adding: what left the list stays until the message is drawn again', page(body('one two')),
      async () => {
        start();
        push([anchor('a', 'one')]);
        push();
        push(null);
        __ondrelApplyHighlights();
        same([marks(), banners(), told()], [['a@0:one'], [], []]);
        push([anchor('b', 'two')]);
        same(marks(), ['a@0:one', 'b@4:two']);
        await redraw('one two');
        same(marks(), ['b@4:two']);
      });

  // --- Reports and ticks. ---

  test('Containers and focus are told when they change', {scripts}, async () => {
    same(told(), [reports(0)]);
    const shows = async (html, ...expected) => {
      document.body.innerHTML = html;
      await advance(299);
      same(told(), [], 'too early');
      await advance(1);
      same(told(), expected, html);
    };
    await shows('<p>loading</p>');
    await shows(card(body('a')), reports(1), ready);
    await shows(card(body('b')));
    await shows(card('collapsed') + card(body('b'), 'is-focused'), reports(1, 0));
    await shows(card(body('a')) + card(body('b'), 'is-focused'), reports(2, 1));
    await shows(
        '<div class="v-MessageView v-MessageCard is-focused"><div class=v-MessageView-body></div></div>',
        reports(2, 0));
    await shows('', reports(0));
    await shows(card(body('a')), reports(1));
    // The class alone is no change in the document that is watched; the next one tells it.
    $('.v-MessageCard').classList.add('is-focused');
    await advance(1000);
    await tells(() => advance(300, $('#body').firstChild.data = 'changed'), reports(1, 0));
  });

  test('Changes that go on delay nothing', page(body('')), async () => {
    start();
    push([anchor('h', 'late')]);
    told();
    for (let i = 0; i < 6; ++i) {
      await advance(50, $('#body').append(i === 0 ? 'late' : '.'));
    }
    same([marks(), banners()], [['h@0:late'], []]);
    await advance(10000);
    same(told(), [], 'the script feeds itself');
  });

  const five = page(...[0, 1, 2, 3, 4].map((i) => card(body(i === 3 ? '' : `text ${i}`, `b${i}`))));
  test('Containers are kept apart, whatever the program sends', five, async () => {
    start(5);
    push([anchor('a', 'text')], [], [anchor('c', 'text')], [anchor('d', 'text')], [], [anchor('f', 'text')]);
    same([0, 1, 2, 3, 4].map((i) => marks($(`#b${i}`))), [['a@0:text'], [], ['c@0:text'], [], []]);
    same([banners(), told()], [[['b3', 'd', hidden(1)]], [lost('d')]]);
    $('#b3').append('text at last');
    await tells(() => advance(300));
    same([marks($('#b3')), banners()], [['d@0:text'], []]);  // found behind the banner, which then goes
    for (const rubbish of [0, '', 'abc', {}, {length: 3}, [null, 1, 'x', {}, [[]]], [[
                             null, 1, 'x', [], {}, {id: 'a'}, {id: 1, exact: 'text', occurrenceIndex: 0},
                             anchor('x', null), anchor('x', 'text', '0'), anchor('x', 'text', NaN)
                           ]]]) {
      await tells(() => __ondrelApplyHighlights(rubbish));
      same($$('mark').length + banners().length, 3, rubbish);
    }
    // For more containers than there are, or fewer.
    push([], [], [], [], [], [anchor('z', 'text')], [anchor('z', 'text')]);
    push([anchor('z', '4')]);
    same(banners(), [['b0', 'z', hidden(1)]]);
    push();
    same([banners(), $$('mark').length], [[], 3]);
  });

  test('An answer may come late', page(body('one', 'b0'), body('two', 'b1')), async () => {
    start(2);
    $('#b0').remove();
    await settle();
    push([anchor('a', 'one')], [anchor('b', 'two')]);  // for the list of before
    same(marks($('#b1')), ['b@0:two']);
    await tells(() => advance(300), lost('a'), reports(1));
    push([anchor('b', 'two')]);
    same([marks($('#b1')), banners()], [['b@0:two'], []]);
  });

  const nested = page('<div class=v-MessageView id=outer>head ', body('text', 'inner'), '</div>');
  test('A container in a container counts', nested, async () => {
    start(2);
    push([anchor('o', 'head text'), anchor('p', 'none')], [anchor('i', 'text'), anchor('j', 'none')]);
    same(banners(), [['outer', 'p', hidden(1)], ['inner', 'j', hidden(1)]]);
    same(marks($('#inner')).map((mark) => mark.replace(/@\d+/, '')), ['o:text', 'i:text']);
    push([], [anchor('j', 'none')]);
    same(banners(), [['inner', 'j', hidden(1)]]);
    // What is selected in both belongs to the first.
    push();
    told();
    await select(pointAt('text'), pointAt('text', 2));
    press(button());
    same(posted(told()[0], 0).exact, 'te');
  });

  // --- Orphans. ---

  test('The banner tells what is missing and clears it', page(body('<i>one</i>')), async () => {
    start();
    let clicks = 0;
    $('#body').onclick = () => ++clicks;
    push([anchor('a', 'gone'), anchor('b', 'one'), anchor('c', 'one', 1)]);
    same([banners(), told()], [[['body', 'a,c', hidden(2)]], [lost('a'), lost('c')]]);
    const banner = $('#body').firstChild;
    const {backgroundColor, color, padding, fontSize, fontFamily, cursor, borderRadius, marginBottom} =
        banner.style;
    same([backgroundColor, color, padding, fontSize, fontFamily, cursor, borderRadius, marginBottom], [
      'rgb(255, 243, 205)', 'rgb(122, 91, 0)', '4px 8px', '12px', '-apple-system, sans-serif', 'pointer',
      '4px', '6px'
    ]);
    push([anchor('a', 'gone'), anchor('b', 'one')]);
    same([banners(), banner.isConnected], [[['body', 'a', hidden(1)]], true]);
    told();
    same(press(banner, 'click'), true);
    same([clicks, banners(), told()], [0, [], ['ondrelHighlightClearOrphaned: 0, ["a"]']]);
    await advance(1000);
    same([banners(), marks(), told()], [[], ['b@0:one'], []], 'it does not come back');
  });

  test('Clearing outside of every container', page(body('one')), async () => {
    push([anchor('a', 'gone')]);
    const banner = $('[data-ondrel-orphan-banner]');
    $('#body').classList.remove('v-Message-body');
    document.body.append(' ');
    await advance(300);
    told();
    await tells(() => press(banner, 'click'), 'ondrelHighlightClearOrphaned: -1, ["a"]');
  });

  // --- Hostile ids and texts. ---

  const odd = [
    '"] , *', '', '\0', 'i'.repeat(10000), 'a,b', '__proto__', '\\', '<img src=x>', '\ud800', ']', '"', '*'
  ];
  test('Odd ids are texts', page(body('one two'), '<mark id=theirs>three</mark>'), async () => {
    start();
    push([...odd, 'innocent'].map((id) => anchor(id, 'one')));
    same([banners(), told(), new Set(marks()).size], [[], [], odd.length + 1]);
    for (const id of odd) {
      const mark = $$('#body mark').find((candidate) => candidate.dataset.ondrelHid === id);
      await tells(() => press(mark, 'click'), `ondrelHighlightRemove: ${id}, 0`);
    }
    await advance(300);
    same([marks(), $('#theirs').textContent, $('img')], [['innocent@0:one'], 'three', null]);
    push([...odd, 'innocent'].map((id) => anchor(id, 'gone')));
    told();
    press($('[data-ondrel-orphan-banner]'), 'click');
    same(told(), [`ondrelHighlightClearOrphaned: 0, ${JSON.stringify(odd)}`]);
    await advance(300);
    same([banners(), marks()], [[], ['innocent@0:one']]);
  });

  test('Odd places are orphans', page(body('one <b>two</b>')), () => {
    const places = [
      ['', 0], ['', 1e15], ['one', -1], ['one', 1], ['one', 1e15], ['One', 0], ['two\0', 0], ['one two ', 0],
      ['x'.repeat(1e6), 0]
    ];
    push(places.map(([exact, index], i) => anchor(String(i), exact, index)));
    same([marks(), banners()], [[], [['body', Object.keys(places).join(), hidden(places.length)]]]);
  });

  test('A failed wrap is no orphan and ends nothing', page(body('one <b>two</b>')), () => {
    start();
    const {surroundContents} = Range.prototype;
    let calls = 0;
    Range.prototype.surroundContents = function(mark) {
      if (++calls === 2) {
        throw new Error('no');
      }
      surroundContents.call(this, mark);
    };
    push([anchor('a', 'one two'), anchor('b', 'two')]);
    same([marks(), banners()], [['a@0:one ', 'b@4:two'], []]);
    same(told(), ['[Ondrel] highlight wrapRange failed: Error: no']);
  });

  // --- Making and removing. ---

  const making = (html, from, to, expected, ...expectedMarks) => test(
      `A selection becomes a highlight: ${from} ${to} in ${html.slice(0, 60)}`, page(body(html)),
      async () => {
        start();
        const made = await highlight(pointAt(...from), pointAt(...to));
        const {id, ...rest} = made;
        same([rest.exact, rest.prefix, rest.suffix, rest.occurrenceIndex], expected);
        const all = expectedMarks.map((mark) => `${id}@${mark}`);
        same(marks(), all);
        await advance(1000);
        same([marks(), told()], [all, []], 'the tick paints nothing twice');
        await redraw(html);
        same(marks(), all, 'drawn again');
        push([made]);
        same([marks(), banners()], [all, []]);
      });
  making('one two one two', ['one two', 8], ['one two', 11], ['one', 'one two ', ' two', 1], '8:one');
  making('xaaax', ['xaaax', 2], ['xaaax', 4], ['aa', 'xa', 'x', 1], '2:aa');
  making(
      'go <a href=/x>to <b>it</b></a>!', ['go', 1], ['it', 1], ['o to i', 'g', 't!', 0], '1:o ', '3:to ',
      '6:i');
  making('<p>one</p><p>two</p>', ['one', 3], ['two', 3], ['two', 'one', '', 0], '3:two');
  const [long, astral] = ['0123456789'.repeat(4), '👍'.repeat(16)];
  making(`${long}X${long}`, ['X'], ['X', 1], ['X', long.slice(8), long.slice(0, 32), 0], '40:X');
  // A character that the context's width cuts in two is left out.
  making(
      `${astral}.X.${astral}`, ['X'], ['X', 1], ['X', `${'👍'.repeat(15)}.`, `.${'👍'.repeat(15)}`, 0],
      '33:X');

  test('Nothing is made of nothing', page(body('one'), body('two', 'other'), '<p>outside</p>'), async () => {
    start(2);
    const shows = async (expected, from, to) => {
      await select(from, to);
      same(Boolean(button()), expected, [from, to].join());
    };
    await shows(true, pointAt('one'), pointAt('one', 3));
    await shows(false, pointAt('one'), pointAt('two', 3));  // across two messages
    await shows(false, pointAt('outside'), pointAt('outside', 2));
    await shows(true, pointAt('one', 3), pointAt('one'));  // backwards
    await shows(false, pointAt('one'), pointAt('one'));
    // The last selection counts, 150 ms after it.
    await select(pointAt('one'), pointAt('one', 3), 149);
    same(button(), undefined);
    await select(pointAt('two'), pointAt('two', 3), 149);
    same(button(), undefined);
    await advance(1);
    const shown = button();
    same(Boolean(shown), true);
    press(document.body);
    same(button(), undefined);
    await shows(true, pointAt('two'), pointAt('two', 2));
    // The message went away meanwhile, with its place in the list or without.
    $('#other').innerHTML = 'two';
    press(button());
    await shows(true, pointAt('one'), pointAt('one', 2));
    const late = button();
    $('#body').remove();
    document.body.append(' ');
    await advance(300);
    press(late);
    same([told(), $$('mark').length, button()], [[reports(1)], 0, undefined]);
  });

  test(
      'The button stands over the selection', page('<p style="margin:50px">', body('one two'), '</p>'),
      async () => {
        document.body.style.margin = '0';
        for (const [margin, text] of [['100px 0 0 200px', 'one'], ['0', 'two']]) {
          $('#body').style.cssText = `position: fixed; top: 0; left: 0; margin: ${margin}; font-size: 20px`;
          await select(pointAt(text), pointAt(text, 3));
          const {left, top, width} = getSelection().getRangeAt(0).getBoundingClientRect();
          const {style} = button();
          same(
              [parseFloat(style.left), parseFloat(style.top)].map(Math.round),
              [Math.max(4, left + width / 2 - 40), Math.max(4, top - 32)].map(Math.round), margin);
        }
        const {
          position,
          zIndex,
          backgroundColor,
          color,
          fontSize,
          padding,
          borderRadius,
          cursor,
          boxShadow,
          webkitUserSelect
        } = getComputedStyle(button());
        same(
            [
              position, zIndex, backgroundColor, color, fontSize, padding, borderRadius, cursor, boxShadow,
              webkitUserSelect
            ],
            [
              'fixed', '2147483647', 'rgb(34, 34, 34)', 'rgb(255, 255, 255)', '12px', '4px 10px', '6px',
              'pointer', 'rgba(0, 0, 0, 0.3) 0px 2px 6px 0px', 'none'
            ]);
      });

  const linked = body('see <a href=#followed>this <b>link</b></a> now', 'b0');
  test('A click removes all pieces and follows no link', page(linked, body('see', 'b1')), async () => {
    start(2);
    let heard = 0;
    $('a').addEventListener('click', () => ++heard);
    push([anchor('h', 'this link now'), anchor('keep', 'see')], [anchor('h', 'see')]);
    const before = $('#b0').textContent;
    await tells(() => same(press($('b mark'), 'click'), true), 'ondrelHighlightRemove: h, 0');
    same([marks($('#b0')), marks($('#b1')), heard, location.hash], [['keep@0:see'], ['h@0:see'], 0, '']);
    same([$('#b0').textContent, $('a').childNodes.length, $('#b0').childNodes.length], [before, 2, 4]);
    await advance(1000);
    same([marks($('#b0')), told()], [['keep@0:see'], []], 'the cache has forgotten it');
    $('b').click();
    same([heard, location.hash], [1, '#followed'], 'other clicks pass');
    // A mark that lies in no container.
    document.body.append($('#b1 mark'));
    await tells(() => press($('body > mark'), 'click'), 'ondrelHighlightRemove: h, -1');
    document.dispatchEvent(new MouseEvent('click'));
  });

  test('Without the program the page goes on', page(body('one')), async () => {
    const handlers = window.webkit.messageHandlers;
    const {postMessage} = handlers.ondrel;
    handlers.ondrel.postMessage = () => {
      throw new Error('gone');
    };
    document.body.append(element(body('two', 'second')));
    await advance(300);
    handlers.ondrel.postMessage = postMessage;
    push([], [anchor('h', 'two')]);
    same(marks($('#second')), ['h@0:two']);
  });

  // --- Frames and size. ---

  const framed = {scripts, html: `${body('outer')}<iframe src=/frame></iframe>`, frame: body('outer inner')};
  test('Each frame is on its own', framed, async () => {
    same(told().toSorted(), [reports(1), reports(1), ready, ready]);
    const {contentWindow: frame, contentDocument} = $('iframe');
    frame.__ondrelApplyHighlights([[anchor('f', 'outer')]]);
    same([marks(), marks(contentDocument.body)], [[], ['f@0:outer']]);
    const [{lastChild}] = contentDocument.querySelectorAll('#body');
    frame.getSelection().setBaseAndExtent(lastChild, 1, lastChild, 6);
    await painted();
    await frame.advance(150);
    press([...contentDocument.querySelectorAll('body > div')].at(-1));
    const {exact, prefix} = posted(told()[0]);
    same([exact, prefix], ['inner', 'outer ']);
  });

  test('A page without transport security has ids, too', page(body('one')), async () => {
    Object.defineProperty(crypto, 'randomUUID', {value: undefined});
    start();
    same((await highlight(pointAt('one'), pointAt('one', 3))).exact, 'one');
  });

  test('A message of 5 MB', page(body('')), async () => {
    start();
    $('#body').hidden = true;  // drawing it isn't what is tested, and takes long
    await settle();
    const unit = '<p>All work and no play makes <b>Jack</b> a dull boy.</p>\n';
    const unitText = element(`<i>${unit}</i>`).textContent;
    const count = Math.ceil(5e6 / unitText.length);
    $('#body').innerHTML = unit.repeat(count);
    const anchors = Array.from({length: 200}, (_, i) => anchor(`h${i}`, 'makes Jack a', i * 500));
    push([...anchors, anchor('end', 'boy.', count - 1), anchor('beyond', 'boy.', count)]);
    same([$$('mark').length, banners()], [601, [['body', 'beyond', hidden(1)]]]);
    same($$('mark').at(-1).parentElement.parentElement.lastElementChild.textContent.endsWith(' boy.'), true);
  });

  // Where a search that starts over at each letter would never end.
  test('A text of one letter', page(body('')), async () => {
    start();
    $('#body').hidden = true;  // drawing it isn't what is tested, and takes long
    await settle();
    $('#body').textContent = 'a'.repeat(5e6);
    push([
      anchor('none', `${'a'.repeat(2e6)}b`), anchor('last', 'a'.repeat(1e6), 4e6),
      anchor('short', 'a'.repeat(9), 3e6)
    ]);
    same(banners(), [['body', 'none', hidden(1)]]);
    same(
        marks().map((mark) => mark.replace(/:.*/, '')),
        [`short@${3e6 + hidden(1).length}`, `last@${4e6 + hidden(1).length}`]);
  });
}
