// Highlights are painted, and what the page shows is told.
{
  // --- Painting. ---

  const painting = (html, text, occurrenceIndex, ...expected) =>
      test(`A saved highlight is painted: ${text} ${occurrenceIndex} in ${html}`, page(body(html)), () => {
        start();
        const [before, elements] = [$('#body').textContent, $$('#body *')];
        for (const times of ['painted', 'once']) {
          push([anchor('h', text, occurrenceIndex)]);
          same([marks(), banners(), told()], [expected.map((mark) => `h@${mark}`), [], []], times);
        }
        same([$('#body').textContent, elements.every((element) => element.isConnected)], [before, true]);
      });
  painting('one two one two', 'two', 1, '12:two');
  painting('aaaa', 'aa', 2, '2:aa');
  const link = 'see <a href=/x>this <b>link</b></a> now';
  painting(link, 'e this link n', 0, '2:e ', '4:this ', '9:link', '13: n');
  painting('π 👩🏽‍🚀 ü', '👩🏽‍🚀', 0, '2:👩🏽‍🚀');

  const keeping = (html, exact, ...expected) =>
      test(`A mark changes no layout: ${exact} in ${html}`, page(body(html)), () => {
        const before = $('#body').innerHTML;
        const elements = $$('#body *');
        const places = () =>
            elements.map((one) => JSON.stringify([one.localName, one.getBoundingClientRect()]));
        const [was] = [places(), start()];
        push([anchor('h', exact)]);
        same([places(), $$('mark').map((mark) => mark.textContent), told()], [was, expected, []]);
        __ondrelRemoveHighlights(null);
        same($('#body').innerHTML, before);
      });
  const rows = '<tr>\n <td>one</td>\n <td>two</td>\n</tr>\n<tr><td>three</td></tr>\n';
  keeping(`<table border=1>\n${rows}</table>`, 'one\n two\n\nthree', 'one', 'two', 'three');
  keeping(
      '<div style="display: grid; gap: 9px">one two<!-- --> three <i>four</i> <b>five</b></div>',
      'two three four five', 'two', ' three ', 'four', 'five');
  keeping(
      '<style>p + p { margin: 50px }</style><p>one</p>\n<p>two <b>three</b> <i>four</i>',
      'one\ntwo three four', 'one', 'two ', 'three', ' ', 'four');
  keeping(
      'a<svg><title>x</title><text y=9>b</text></svg><select><option>c</select><textarea>d</textarea>e',
      'abcde', 'a', 'e');
  keeping(
      'a<style>b {}</style><script>0</script><template>c</template><noscript>d</noscript>e<p contenteditable>f</p>g',
      'aeg', 'a', 'e', 'g');

  test('Highlights overlap, in the order they came in', page(body('one two <i>three</i> four')), () => {
    push([anchor('a', 'two three'), anchor('b', 'o three f'), anchor('c', 'three'), anchor('a', 'one')]);
    // The later inside the earlier.
    same(
        $('#body').innerHTML.replace(/<mark [^>]*hid="(.)"[^>]*>/g, '[$1 ').replaceAll('</mark>', ']'),
        'one [a tw[b o ]]<i>[a [b [c three]]]</i>[b  f]our');
  });

  test('Only adding, until the message is drawn again', page(body('one two')), async () => {
    start();
    push([anchor('a', 'one')]);
    push();
    __ondrelApplyHighlights();
    same([marks(), banners(), told()], [['a@0:one'], [], []]);
    Object.defineProperty(crypto, 'randomUUID', {value: undefined});  // without transport security
    push([anchor('b', 'two')]);
    same(marks(), ['a@0:one', 'b@4:two']);
    await redraw('one two');
    same(marks(), ['b@4:two']);
    const {id} = await highlight(['one'], ['one', 3]);
    await redraw('one two');
    same(marks(), [`${id}@0:one`, 'b@4:two']);
    await tells(comeBack, reports(1), ready);
  });

  // --- Reports and ticks. ---

  test('Containers and focus are told when they change', {scripts}, async () => {
    same(told(), [reports(0)]);
    const shows = async (html, ...expected) => {
      document.body.innerHTML = html;
      await tells(() => advance(299));
      await tells(() => advance(1), ...expected);
    };
    await shows('<p>loading</p>');
    await shows(card(body('a')), reports(1), ready);
    await shows(card(body('b')), reports(1));  // another message, though the number is the same
    await shows(card('collapsed') + card(body('b'), 'is-focused'), reports(1, 0));
    await shows(card(body('a')) + card(body('b'), 'is-focused'), reports(2, 1));
    await shows('', reports(0));
    await shows(card(body('a')), reports(1));
    // The class alone is enough.
    await tells(() => advance(300, $('.v-MessageCard').classList.add('is-focused')), reports(1, 0));
  });

  test('Changes that go on delay nothing', page(body('')), async () => {
    start();
    push([anchor('h', 'late')]);
    told();
    for (let i = 0; i < 6; ++i) {
      await advance(50, $('#body').append(i === 0 ? 'late' : '.'));
    }
    same([marks(), banners()], [['h@0:late'], []]);
    await tells(() => advance(10000));  // it doesn't feed itself
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
    const odd = [null, 'x', {}, {id: 'a'}, anchor(1, 'text'), anchor('x', null), anchor('x', 'text', NaN)];
    for (const rubbish of [0, {length: 3}, [null, 1, 'x', {}, [[]]], [odd]]) {
      await tells(() => __ondrelApplyHighlights(rubbish));
      same($$('mark').length + banners().length, 3, rubbish);
    }
  });

  // As an application draws another message: into new elements.
  const replace = (id, html) => $(`#${id}`).replaceWith(element(body(html, id)));
  test(
      'Anchors belong to the elements they were sent for', page(body('one', 'b0'), body('two', 'b1')),
      async () => {
        start(2);
        push([anchor('a', 'one')]);
        $('#b0').remove();
        await tells(() => push([anchor('a', 'one')], [anchor('b', 'two')]));  // for the list of before
        same([marks($('#b1')), banners()], [['b@0:two'], []]);
        await tells(() => advance(300), reports(1));
        push([anchor('c', 'wo'), anchor('gone', 'gone')]);
        replace('b1', 'two');
        await tells(() => advance(300), lost('gone'), reports(1));
        same([marks($('#b1')), banners()], [[], []], 'nothing until there is an answer');
        const late = (number) => __ondrelApplyHighlights([[anchor('c', 'wo')]], number);
        late(2);
        late(99);
        same([marks($('#b1')), banners()], [[], []]);
        late(3);
        same(marks($('#b1')), ['c@1:wo']);
        // Taken out and brought back it may show anything.
        const body1 = $('#b1');
        body1.remove();
        await advance(300);
        document.body.append(body1);
        await advance(300);
        late(3);
        late(4);
        same([marks($('#b1')), banners()], [[], []]);
        // What is listed for another message now stands astray.
        await advance(300, document.body.append(element(body('two', 'b2'))));
        __ondrelApplyHighlights([[anchor('x', 'two')]], 6);
        __ondrelApplyHighlights([[], [anchor('x', 'two')]], 6);
        same([marks($('#b1')), marks($('#b2'))], [[], ['x@0:two']]);
      });

  test(
      'What is told of a highlight names its place in the last report', page(body('one', 'b0')), async () => {
        const {length} = posts();
        push([anchor('a', 'one'), anchor('gone', 'gone')]);
        const press1 = (target, type, ...expected) => {
          document.body.prepend(element(body('new')));  // nobody has looked since
          posts();
          press(target, type);
          same(posts().map((line) => line.replace(/: \{.*\}/, ':').replace(/, \[[-\d].*/, '')), expected);
        };
        press1(
            $('mark'), 'click', 'ondrelHighlightContainersChanged: 2, , 2, , 0',
            'ondrelHighlightRemove: a, 1, 2');
        press1(
            banner(), 'click', 'ondrelHighlightContainersChanged: 3, , 3, , 0',
            'ondrelHighlightClearOrphaned: 2, ["gone"], 3');
        await select(['one'], ['one', 3]);
        press1(
            button(), 'mousedown', 'ondrelHighlightContainersChanged: 4, , 4, , 0',
            'ondrelHighlightCreate:, 3, 4');
        same(length, 2);
      });

  // The application says which message is open, and may draw the next one into the same elements.
  test('A message in the elements of another has nothing of it', page(body('Kind regards')), async () => {
    let id = 'M1';
    window.FastMail = {router: {appController: {message: {id: () => id}}}};
    const told = (number) => `ondrelHighlightContainersChanged: 1, , ${number}, ${id}, 0, [-1], `;
    posts();
    comeBack();
    same(posts(), [told(2), ready]);
    push([anchor('h', 'regards'), anchor('gone', 'gone')]);
    id = 'M2';
    posts(await advance(300, document.body.append(' ')));
    same([$$('mark').length, banners().length], [1, 1], 'not yet');
    $('#body').innerHTML = 'Best regards';
    await tells(() => advance(300), reports(1));
    __ondrelApplyHighlights([[anchor('h', 'regards')]], 2);
    same([marks(), banners()], [[], []]);
    push([anchor('h', 'Best')]);
    same(marks(), ['h@0:Best']);
  });

  test('Cards count, whatever mail brings with it', {scripts}, async () => {
    const shows = async (html, ...expected) => {
      document.body.innerHTML = html;
      await advance(300);
      same(posts().map((line) => line.replace(/^.*?: (.*?), \d+, ,/, '$1:')), expected, html);
    };
    posts();
    const [closed, foreign] = [card('collapsed'), body('x') + card(body('y', 'y'), 'is-focused')];
    await shows(closed + card(body('a')) + card(body('b')), '2, : 3, [1,2], ', ready);
    await shows(card('', 'is-focused') + closed + card(body('b')), '1, : 3, [2], 0');
    await shows(closed + card(body(foreign)) + card(body('b')), '2, : 3, [1,2], ');
    await shows(closed + body(foreign), '3, : 1, [-1,-1,-1], ');
    await shows(card(body('a')) + `<div class="a v-Compose">${card(foreign)}</div>`, '1, : 1, [0], ');
  });

  const inCard = {
    scripts,
    html: card('closed') + card('<iframe src=/frame></iframe>'),
    frame: body('inside')
  };
  test('The card of a framed message is around its frame', inCard, async () => {
    const inFrame = () => posts().filter((line) => line.startsWith('ondrelHighlightContainersChanged: 1'));
    same(inFrame(), ['ondrelHighlightContainersChanged: 1, , 1, , 2, [1], ']);
    $$('section')[1].classList.add('is-focused');
    await advance(300);
    same(inFrame(), ['ondrelHighlightContainersChanged: 1, 0, 2, , 2, [1], 1']);
    await advance(300, $('section').remove());
    same(inFrame(), ['ondrelHighlightContainersChanged: 1, 0, 3, , 1, [0], 0']);
  });

  test('The program takes highlights off', five, () => {
    push([anchor('a', 'text'), anchor('b', 'text')], [anchor('c', 'gone'), anchor('d', 'gone')]);
    __ondrelRemoveHighlights(['a', 'c']);
    push();
    same([marks($('#b0')), banners()], [['b@0:text'], []]);
    push([anchor('b', 'text')], [anchor('d', 'gone')]);
    __ondrelRemoveHighlights(null);
    comeBack();
    same([$$('mark').length, banners()], [0, []]);
  });

  const nested = page('<div class=v-MessageView id=outer>head ', body('text', 'inner'), '</div>');
  test('A container in a container counts', nested, async () => {
    start(2);
    push([], [anchor('j', 'none')]);
    same(banners(), [['inner', 'j', hidden(1)]]);
    push([anchor('p', 'none')], [anchor('j', 'none')]);
    same(banners(), [['outer', 'p', hidden(1)], ['inner', 'j', hidden(1)]]);
    push();
    push([anchor('o', 'head text')], [anchor('i', 'text')]);
    same(marks($('#inner')).map((mark) => mark.replace(/@\d+/, '')), ['o:text', 'i:text']);
    // What is selected in both belongs to the first.
    same((await highlight(['text'], ['text', 2])).exact, 'te');
  });

  // --- Orphans. ---

  test('The banner tells what is missing and clears it', page(body('<i>one</i>')), async () => {
    start();
    let clicks = 0;
    $('#body').onclick = () => ++clicks;
    push([anchor('a', 'gone'), anchor('b', 'one'), anchor('c', 'one', 1)]);
    same([banners(), told()], [[['body', 'a,c', hidden(2)]], [lost('a'), lost('c')]]);
    const first = $('#body').firstChild;
    push([anchor('a', 'gone'), anchor('b', 'one')]);
    same([banners(), banner() === first, told()], [[['body', 'a', hidden(1)]], true, [lost('a')]]);
    await tells(() => advance(1000));  // what the script itself changes brings no tick
    await tells(() => same(press(first, 'click'), true), 'ondrelHighlightClearOrphaned: 0, ["a"]');
    same([banners(), clicks], [[], 0]);
    await tells(() => advance(1000));
    same([banners(), marks()], [[], ['b@0:one']]);
    // What it says is no text of the message.
    push([anchor('a', 'gone'), anchor('h', 'highlight')]);
    same(banners(), [['body', 'a,h', hidden(2)]]);
    same((await highlight(['one'], ['one', 3])).prefix, '');
  });

  const odd = ['"] , *', '', '\0', 'a,b', '__proto__', '\\', '<img src=x>', '\ud800'];
  test('Odd ids are texts', page(body('one two'), '<mark id=theirs>three</mark>'), async () => {
    start();
    push([...odd, 'innocent'].map((id) => anchor(id, 'one')));
    same([banners(), told(), new Set(marks()).size], [[], [], odd.length + 1]);
    for (const id of odd) {
      const mark = $$('#body mark').find((candidate) => candidate.dataset.ondrelHid === id);
      await tells(() => press(mark, 'click'), `ondrelHighlightRemove: ${id}, 0`);
    }
    same([marks(), $('#theirs').textContent, $('img')], [['innocent@0:one'], 'three', null]);
    push([...odd, 'innocent'].map((id) => anchor(id, 'gone')));
    told();
    await tells(() => press(banner(), 'click'), `ondrelHighlightClearOrphaned: 0, ${JSON.stringify(odd)}`);
  });

  test('Odd places are orphans', page(body('one <b>two</b>')), () => {
    const places = [['', 0], ['one', -1], ['one', 1], ['one', 1e15], ['One', 0], ['one two ', 0]];
    push(places.map(([exact, index], i) => anchor(String(i), exact, index)));
    same([marks(), banners()], [[], [['body', Object.keys(places).join(), hidden(places.length)]]]);
  });

  // --- Size. ---

  // Drawing it isn't what is tested, and takes long.
  const large = page('<div hidden>', body(''), '</div>');
  test('A message of 5 MB', large, () => {
    const unit = '<p>All work and no play makes <b>Jack</b> a dull boy.</p>\n';
    const count = Math.ceil(5e6 / element(`<i>${unit}</i>`).textContent.length);
    $('#body').innerHTML = unit.repeat(count);
    const anchors = Array.from({length: 200}, (_, i) => anchor(`h${i}`, 'makes Jack a', i * 500));
    push([...anchors, anchor('end', 'boy.', count - 1), anchor('beyond', 'boy.', count)]);
    same([$$('mark').length, banners()], [601, [['body', 'beyond', hidden(1)]]]);
    same($$('mark').at(-1).parentElement.parentElement.lastElementChild.textContent.endsWith(' boy.'), true);
  });

  // Where a search that starts over at each letter would never end.
  test('A text of one letter', large, () => {
    const letters = (number) => 'a'.repeat(number);
    $('#body').textContent = letters(5e6);
    push([
      anchor('none', `${letters(2e6)}b`), anchor('last', letters(1e6), 4e6), anchor('short', letters(9), 3e6)
    ]);
    const offset = hidden(1).length;
    same(
        [banners(), ...marks().map((mark) => mark.replace(/:.*/, ''))],
        [[['body', 'none', hidden(1)]], `short@${3e6 + offset}`, `last@${4e6 + offset}`]);
  });
}
