// Highlights are made and taken away by hand.
{
  // --- Making and removing. ---

  const making = (html, from, to, expected, ...expectedMarks) =>
      test(`A selection becomes a highlight: ${from} ${to} in ${html}`, page(body(html)), async () => {
        start();
        const made = await highlight(from, to);
        same([made.exact, made.prefix, made.suffix, made.occurrenceIndex], expected);
        const all = expectedMarks.map((mark) => `${made.id}@${mark}`);
        same(marks(), all);
        await tells(() => advance(1000));  // the tick paints nothing twice
        same(marks(), all);
        await redraw(html);
        same([marks(), banners()], [all, []], 'drawn again');
      });
  making('one two one two', ['one two', 8], ['one two', 11], ['one', 'one two ', ' two', 1], '8:one');
  making(
      'go <a href=/x>to <b>it</b></a>!', ['go', 1], ['it', 1], ['o to i', 'g', 't!', 0], '1:o ', '3:to ',
      '6:i');
  const astral = '👍'.repeat(16);
  // A character that the context's width cuts in two is left out.
  making(
      `${astral}.X.${astral}`, ['X'], ['X', 1], ['X', `${'👍'.repeat(15)}.`, `.${'👍'.repeat(15)}`, 0],
      '33:X');

  const reading = (html, from, to, ...quote) =>
      test(`Readers see blanks between blocks: ${html}`, page(body(html)), async () => {
        const made = await highlight(from, to);
        const {prefix, exact, suffix} = made.quote ?? {};
        same([prefix, exact, suffix], quote);
      });
  reading('a<br>b<table><tr><td>c<td>d</table>e', ['b'], ['d', 1], 'a ', 'b c d', ' e');
  reading(
      'a<div><!-- --><hr></div>b<style>p {}</style><p>c <p>d\n<p>e', ['a'], ['e', 1], '', 'a b c d\ne', '');

  const several = page(body('one<i hidden>unseen</i>'), body('two', 'other'), '<p>outside</p>');
  test('Nothing is made of nothing', several, async () => {
    start(2);
    const shows = async (expected, ...selection) => {
      await select(...selection);
      same(Boolean(button()), expected, selection.join());
    };
    await shows(true, ['one'], ['one', 3]);
    await shows(false, ['one'], ['two', 3]);  // across two messages
    await shows(false, ['outside'], ['outside', 2]);
    await shows(false, ['unseen'], ['unseen', 2]);
    await shows(true, ['one', 3], ['one']);  // backwards
    await shows(false, ['one'], ['one']);
    // The last selection counts, 150 ms after it.
    await shows(false, ['one'], ['one', 3], 149);
    await shows(false, ['two'], ['two', 3], 149);
    await advance(1);
    same(Boolean(button()), true);
    press(document.body, 'mousedown');
    same(button(), undefined);
    await shows(true, ['two'], ['two', 2]);
    // The message went away meanwhile, with its place in the list or without.
    $('#other').innerHTML = 'two';
    press(button(), 'mousedown');
    await shows(true, ['one'], ['one', 2]);
    const late = button();
    $('#body').className = '';
    document.body.append(' ');
    await advance(300);
    press(late, 'mousedown');
    same([told(), $$('mark').length, button()], [[reports(1)], 0, undefined]);
  });

  const scrolled = page(
      '<div id=scroller style="height: 200px; margin-top: 99px; overflow: auto">',
      body('<p style="margin: 99px 0 2000px">one two</p>'), '</div>');
  test('The button follows its text out of sight, and is pressed once', scrolled, async () => {
    start();
    const scroll = async (to) => {
      $('#scroller').scrollTop = to;
      await painted();
      await painted();
    };
    await select(['one'], ['one', 3]);
    const [top, shown] = [button().offsetTop, button()];
    await scroll(40);
    same([button() === shown, shown.offsetTop, shown.role], [true, top - 40, 'button']);
    await scroll(150);
    same(button(), undefined);
    for (const events of [['mousedown', 'click'], ['click', 'mousedown', 'click']]) {
      await scroll(0);
      await select(['two'], ['two', 3]);
      told();
      const pressed = button();
      events.forEach((type) => press(pressed, type));
      same(told().length, 1);
    }
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
    await tells(() => advance(1000));
    same(marks($('#b0')), ['keep@0:see'], 'the cache has forgotten it');
    $('b').click();
    same([heard, location.hash], [1, '#followed'], 'other clicks pass');
  });

  test('Selecting words in a highlight leaves it', page(body('<a href=#x>one two</a>')), async () => {
    start();
    push([anchor('h', 'one two')]);
    const click = (more, ...expected) => tells(async () => {
      const [from, to] = [{detail: 1, clientX: 9, clientY: 9}, {detail: 1, clientX: 9, clientY: 9, ...more}];
      press($('mark'), 'mousedown', {...from, detail: to.detail});
      same(press($('mark'), 'click', to), true);  // and no link is followed
      await advance(399);
    }, ...expected);
    await click({clientX: 14});
    await click({clientX: 12, clientY: 12});
    await click({detail: 1});
    await click({detail: 2});  // nor does the first of two clicks
    await tells(() => advance(1000));
    await click({detail: 1});
    getSelection().selectAllChildren($('mark'));
    await tells(() => advance(1));
    await click({detail: 0});
    same(marks(), ['h@0:one two']);
    getSelection().removeAllRanges();
    await click({clientX: 12});
    await tells(() => advance(1), 'ondrelHighlightRemove: h, 0');
    same(marks(), []);
  });

  // --- Frames. ---

  test('A highlight can be ordered', {scripts, html: body('one'), frame: body('two')}, async () => {
    same(__ondrelHighlightSelection(), false);
    await select(['one'], ['one', 3], 0);
    same([__ondrelHighlightSelection(), __ondrelHighlightSelection(), marks().length], [true, false, 1]);
    show('<iframe src=/frame></iframe>');
    const frame = $('iframe');
    await new Promise((resolve) => frame.onload = resolve);
    const {contentDocument, contentWindow} = frame;
    show('<iframe sandbox src=/frame></iframe>');
    contentWindow.getSelection().selectAllChildren(contentDocument.querySelector('#body'));
    same([__ondrelHighlightSelection(), marks(contentDocument.body).length], [true, 1]);
    same(contentWindow.__ondrelHighlightSelection(), false);
    getSelection().selectAllChildren($('#body'));
    contentWindow.getSelection().selectAllChildren(contentDocument.querySelector('#body'));
    frame.focus();
    same([__ondrelHighlightSelection(), marks(contentDocument.body).length, marks().length], [true, 2, 1]);
    window.focus();  // or the engine takes the selection out of the next page
  });

  const asking = `${body('words')}<script>addEventListener('load', async () => {
    getSelection().selectAllChildren(document.querySelector('#body'));
    await new Promise((resolve) => requestAnimationFrame(resolve));
    await advance(150);
    parent.postMessage([typeof __ondrelApplyHighlights, document.body.lastChild.textContent === 'Highlight'], '*');
  })</script>`;
  test('A frame that speaks for its sender offers nothing', {scripts, frame: asking}, async () => {
    const says = (attributes) => new Promise((resolve) => {
      addEventListener('message', ({data}) => resolve(data), {once: true});
      show(`<iframe src=/frame ${attributes}></iframe>`);
    });
    same(await says(''), ['function', true]);
    same(await says('sandbox="allow-scripts"'), ['undefined', false]);
  });

  // A control character takes seven bytes of the message.
  test('What can\'t be saved isn\'t painted', page(body('[<i hidden></i>]')), async () => {
    start();
    for (const [length, painted] of [[2 ** 20, true], [2 ** 20 * 8 / 7, false]]) {
      $('i').textContent = '\x01'.repeat(length);
      handBackBridge();
      await select(['['], [']', 1]);
      press(button(), 'mousedown');
      await advance(300);
      same($$('mark').length, painted ? 3 : 0);
      press($('mark') ?? document.body, 'click');
    }
    same(told(), ['[Ondrel] highlight: not saved, since the program can\'t take it']);
  });
}
