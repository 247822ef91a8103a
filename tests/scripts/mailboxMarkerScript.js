// Rows of threads with highlights have their corner.
{
  const scripts = ['mailboxMarkerScript', 'mailboxMarkerScript'];  // injected twice, it works once
  const row = (href, more = '') => `<li ${more}><a href='${href}'>row</a></li>`;
  const list = (...rows) => `<ul class="list v-Mailbox-list">${rows.join('')}</ul>`;
  const page = (...rows) => ({scripts, html: rows.length > 0 ? list(...rows) : ''});
  const push = (...ids) => __ondrelApplyMailboxHighlightMarks(ids);
  const line = (text) => `[Ondrel] mailbox marks: ${text}`;
  const counted = (marked, unmarked) =>
      line(`reconciled ${marked + unmarked} row(s) — ${marked} marked, ${unmarked} unmarked`);
  const received = (ids, found = 'found') =>
      line(`received ${ids.length} threadId(s) [${ids}], listEl=${found}`);
  const skipped = line('reconcile skipped, no listEl');
  const ready = 'ondrelMailboxMarkersReady';
  const marked = () => $$('li').map((li) => li.querySelectorAll('[data-ondrel-mark="1"]').length).join('');

  test(
      'The rows of a set of threads are marked',
      page(
          row('/mail/Inbox/T1.M1?u=1'), row('/mail/Inbox/T2'),
          row('https://x.example/mail/a/T3.M3#x', 'style="position:absolute"'), row('/other/T1.M1'),
          '<li>no link</li>', row('/mail/Inbox/'), row('http://[/mail/T1'), row('/mail/T11')),
      async () => {
        same(told(), [ready, counted(0, 8)]);
        await tells(
            () => push('T1', 'T2', 'T3', '', 'constructor'), received(['T1', 'T2', 'T3', '', 'constructor']),
            counted(3, 5));
        same(
            [marked(), $$('li').map((li) => li.style.position).join()],
            ['11100000', 'relative,relative,absolute,,,,,']);
        const mark = $('li').firstChild;
        const {
          position,
          top,
          left,
          width,
          height,
          borderStyle,
          borderWidth,
          borderColor,
          pointerEvents,
          zIndex
        } = mark.style;
        same(
            [
              position, top, left, width, height, borderStyle, borderWidth, borderColor, pointerEvents, zIndex
            ],
            [
              'absolute', '0px', '0px', '0px', '0px', 'solid', '10px 10px 0px 0px',
              'rgb(245, 197, 24) transparent transparent', 'none', '5'
            ]);
        // Painting is a change, which brings one tick and no more.
        await tells(() => advance(10000), counted(3, 5));
        same($('li').firstChild === mark, true);
        await tells(() => push('T2'), received(['T2']), counted(1, 7));
        same(marked(), '01000000');
        await tells(() => __ondrelApplyMailboxHighlightMarks(), received([]), counted(0, 8));
        same(marked(), '00000000');
        for (const rubbish of [null, 'T1', {0: 'T1', length: 1}]) {
          await tells(() => __ondrelApplyMailboxHighlightMarks(rubbish), received([]), counted(0, 8));
        }
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
    $('ul').remove();
    await tells(() => advance(300), skipped);
  });

  test('Without the program the rows are marked when it is back', page(row('/mail/T1')), async () => {
    same(told(), [ready, counted(0, 1)]);
    window.webkit.messageHandlers.ondrel.postMessage = null;
    push('T1');
    same(marked(), '1');
  });
}
