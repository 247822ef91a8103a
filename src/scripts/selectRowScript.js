// Opens the message in a page that has just been given its address, and shows its row. It is evaluated again
// and again until its value is true.

const log = logger('show-email: ');

try {
  const controller = appController();
  const message = controller?.message;
  if (typeof controller?.goMessage !== 'function' || !message || message.id() !== emailId) {
    log(`message record not ready yet for ${emailId}`);
    return false;
  }
  controller.goMessage(message);
  log(`called goMessage(ac.message) for ${emailId}`);

  const links = [...document.querySelectorAll('a[href]')];
  const findLink = (needle) => links.find((link) => link.getAttribute('href').includes(needle));
  if (findLink(`/${thread}.${emailId}`)) {
    log(`exact row link found for ${emailId}`);
    return true;
  }
  const row = findLink(`/${thread}.`)?.closest('li');
  if (!row) {
    log(`no row found yet for thread ${thread}, will retry`);
    return false;
  }
  if (!row.classList.contains(FOCUSED_CLASS)) {
    document.querySelectorAll(`.${FOCUSED_CLASS}`).forEach((other) => other.classList.remove(FOCUSED_CLASS));
    row.classList.add(FOCUSED_CLASS);
    row.scrollIntoView({block: 'center'});
    log(`no exact row, approximated via thread row for ${emailId}`);
  }
  return true;
} catch (error) {
  log(`goMessage threw ${error}`);
  return false;
}
