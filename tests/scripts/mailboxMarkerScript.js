// Rows of threads with highlights have their corner.
{
  const scripts = ['mailboxMarkerScript', 'mailboxMarkerScript'];  // injected twice, it works once
  const row = (href, more = '') => `<li ${more}><a href='${href}'>row</a></li>`;
  const list = (...rows) => `<ul class="list v-Mailbox-list">${rows.join('')}</ul>`;
  const page = (...rows) => ({scripts, html: rows.length > 0 ? list(...rows) : ''});
  const push = (...ids) => __ondrelApplyMailboxHighlightMarks(ids);
  const ready = 'ondrelMailboxMarkersReady';
  shorten = (line) =>
      line === ready || line.includes('reconciled') ? line.replace(/.*(reconciled).*/, '$1') : null;
  const marked = () => $$('li').map((li) => li.querySelectorAll('[data-ondrel-mark="1"]').length).join('');

  const rows = page(
      row('/mail/Inbox/T1.M1?u=1'), row('/mail/Inbox/T2?u=1'),
      row('https://x.example/mail/a/T3.M3#x', 'style="position:absolute"'), row('/other/T1.M1'),
      '<li>no link</li>', row('/mail/Inbox/'), row('http://[/mail/T1'), row('/mail/T11'));
  test('The rows of a set of threads are marked', rows, async () => {
    push('T1', 'T2', 'T3', '', 'constructor');
    same(
        [marked(), ...$$('li').map((li) => li.style.position)],
        ['11100000', 'relative', 'relative', 'absolute', '', '', '', '', '']);
    // Painting is a change, which brings one tick and no more.
    told();
    const mark = $('li').firstChild;
    await tells(() => advance(10000), 'reconciled');
    same($('li').firstChild === mark, true);
    push('T2');
    same(marked(), '01000000');
    for (const none of [undefined, 'T2', {0: 'T2', length: 1}, [null, 7, {}, ['T2']]]) {
      push('T2');
      __ondrelApplyMailboxHighlightMarks(none);
      same(marked(), '00000000');
    }
  });

  test('Rows come and go', page(), async () => {
    push('T1');
    show(list(row('/mail/Inbox/T1.M1')));
    await tells(() => advance(299));
    await tells(() => advance(1), ready, 'reconciled');
    same(marked(), '1');
    // Scrolled: one row comes in, another is used for another thread with what stands in it.
    $('ul').append(element(row('/mail/Inbox/T1.M2')));
    $('a').href = '/mail/Inbox/T2.M2';
    await advance(300);
    same(marked(), '01');
    // The application makes another list; ready is told once.
    $('ul').remove();
    show(list(row('/mail/Inbox/T1.M1'), row('/mail/Inbox/T1.M3')));
    await advance(600);
    same([marked(), told().includes(ready)], ['11', false]);
    await tells(comeBack, ready, 'reconciled');
    $('ul').remove();
    await tells(() => advance(300));
  });
}
