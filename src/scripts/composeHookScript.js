// Lets a new message open in a window of its own, by standing in for the application's two compose actions.

const BOOT_DELAY_MS = 2000;  // the application makes its objects in this time

// The address of this page with its last piece replaced by "compose"; empty if it has none to replace.
const composeAddress = () => {
  try {
    const url = new URL(window.location.href);
    const pieces = url.pathname.split('/').filter((piece) => piece !== '');
    if (pieces.length === 0) {
      throw new Error('No path segments found');
    }
    pieces[pieces.length - 1] = 'compose';
    url.pathname = `/${pieces.join('/')}`;
    return url.href;
  } catch (error) {
    console.log('Failed to transform URL:', error.message);
    return '';
  }
};

const replaceActions = async () => {
  await new Promise((resolve) => setTimeout(resolve, BOOT_DELAY_MS));

  const controller = appController();
  const originalGoCompose = controller.goCompose;
  const originalGoNewCompose = controller.goNewCompose;
  const targetAddress = composeAddress();

  // Appended as it stands, also behind an address without a query: the compose page reads it in this form.
  const openWindow = () => post({
    type: 'compose',
    targetAddress: `${targetAddress}&ui=minimal`,
  });

  // The actions have no event among their arguments, so the one in progress is asked. There may be none.
  const wantsWindow = (event) => Boolean(event) && (composeInWindow || event.shiftKey);

  controller.goCompose = function(...args) {
    const event = window.event;
    if (wantsWindow(event) && (event.code === 'KeyC' || event instanceof PointerEvent)) {
      openWindow();
      return undefined;
    }
    return originalGoCompose?.apply(this, args);
  };

  // Replying comes here too: only a link to the compose page asks for a new message.
  controller.goNewCompose = function(...args) {
    const event = window.event;
    const source = String(event?.srcElement);
    if (wantsWindow(event) && source.includes('/mail/') && source.includes('/compose')) {
      openWindow();
      return undefined;
    }
    return originalGoNewCompose?.apply(this, args);
  };

  const reportReady = () => post({type: 'composeReady'});
  // Shown again as it was left, which is before the user's last choice perhaps.
  window.addEventListener('pageshow', ({persisted}) => persisted && reportReady());
  reportReady();
};

replaceActions();
