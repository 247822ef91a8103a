// Rows of threads with highlights have their corner.
{
  const scripts = ['mailboxMarkerScript', 'mailboxMarkerScript'];  // injected twice, it works once
  const row = (href, more = '') => `<li ${more}><a href='${href}'>row</a></li>`;
  const list = (...rows) => `<ul class="list v-Mailbox-list">${rows.join('')}</ul>`;
  const page = (...rows) => ({scripts, html: rows.length > 0 ? list(...rows) : ''});
  const push = (...ids) => __ondrelApplyMailboxHighlightMarks(ids);
  shorten = (line) => line.replace(/^\[Ondrel\] mailbox marks: /, '~');
  const counted = (marked, unmarked) =>
      `~reconciled ${marked + unmarked} row(s) — ${marked} marked, ${unmarked} unmarked`;
  const received = (ids, found = 'found') => `~received ${ids.length} threadId(s) [${ids}], listEl=${found}`;
  const skipped = '~reconcile skipped, no listEl';
  const ready = 'ondrelMailboxMarkersReady';
  const marked = () => $$('li').map((li) => li.querySelectorAll('[data-ondrel-mark="1"]').length).join('');

  const rows = page(
      row('/mail/Inbox/T1.M1?u=1'), row('/mail/Inbox/T2?u=1'),
      row('https://x.example/mail/a/T3.M3#x', 'style="position:absolute"'), row('/other/T1.M1'),
      '<li>no link</li>', row('/mail/Inbox/'), row('http://[/mail/T1'), row('/mail/T11'));
  test('The rows of a set of threads are marked', rows, async () => {
    same(told(), [ready, counted(0, 8)]);
    const ids = ['T1', 'T2', 'T3', '', 'constructor'];
    await tells(() => push(...ids), received(ids), counted(3, 5));
    same(
        [marked(), ...$$('li').map((li) => li.style.position)],
        ['11100000', 'relative', 'relative', 'absolute', '', '', '', '', '']);
    const mark = $('li').firstChild;
    looks(mark, `position: absolute; top: 0; left: 0; width: 0; height: 0; border-style: solid;
        border-width: 10px 10px 0 0; border-color: #f5c518 transparent transparent transparent;
        pointer-events: none; z-index: 5`);
    // Painting is a change, which brings one tick and no more.
    await tells(() => advance(10000), counted(3, 5));
    same($('li').firstChild === mark, true);
    await tells(() => push('T2'), received(['T2']), counted(1, 7));
    same(marked(), '01000000');
    for (const none of [undefined, null, 'T1', {0: 'T1', length: 1}]) {
      await tells(() => __ondrelApplyMailboxHighlightMarks(none), received([]), counted(0, 8));
    }
    same(marked(), '00000000');
    await tells(() => push(null, 7, {}, ['T1']), received([null, 7, {}, ['T1']]), counted(0, 8));
  });

  test('Rows come and go', page(), async () => {
    same(told(), [skipped]);
    await tells(() => push('T1'), received(['T1'], 'null'), skipped);
    show(list(row('/mail/Inbox/T1.M1')));
    await tells(() => advance(299));
    await tells(() => advance(1), ready, counted(1, 0));
    same(marked(), '1');
    told(await advance(300));
    // Scrolled: one row comes in, another is used for another thread with what stands in it.
    $('ul').append(element(row('/mail/Inbox/T1.M2')));
    $('a').href = '/mail/Inbox/T2.M2';
    await tells(() => advance(300), counted(1, 1));
    same(marked(), '01');
    // The application makes another list; ready is told once.
    $('ul').remove();
    show(list(row('/mail/Inbox/T1.M1'), row('/mail/Inbox/T1.M3')));
    await tells(() => advance(300), counted(2, 0));
    same(marked(), '11');
    told(await advance(300));
    await tells(comeBack, ready, counted(2, 0));
    $('ul').remove();
    await tells(() => advance(300), skipped);
  });

  test('Without the program the rows are marked', page(), async () => {
    window.webkit.messageHandlers.ondrel.postMessage = null;
    push('T1');
    await advance(300, show(list(row('/mail/T1'))));
    same(marked(), '1');
  });
}
