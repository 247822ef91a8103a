// Tells the program the title, the open message, and whether a letter is being written. The application has
// no event for any of them, so it is asked.

const POLL_MS = 500;

let last = '';
let lastMsgId = '';
let lastWriting = 'false';

// An empty title changes nothing: the window keeps the one it has.
const reportTitle = ({appController, title}) => {
  const t = appController.message?.get('subject') || title || '';
  if (t !== '' && t !== last) {
    last = t;
    post({type: 'titleChange', title: t});
  }
};

// Leaving a message isn't told, but forgets it, so that opening it again is told again.
const reportMessage = ({appController}) => {
  const mid = appController.message?.id?.() || '';
  if (mid !== lastMsgId) {
    lastMsgId = mid;
    if (mid !== '') {
      post({type: 'ondrelMessageChanged', internalId: mid});
    }
  }
};

// A reply may be written below its message, at the message's own address. An editor counts before the
// application has a draft of it, and a draft before its editor.
const reportWriting = (draft) => {
  const isWriting = String(Boolean(draft) || document.querySelector(LETTER_SELECTOR) !== null);
  if (isWriting !== lastWriting) {
    lastWriting = isWriting;
    post({type: 'ondrelWritingChanged', isWriting});
  }
};

// The program notifies, so the application's own setting has no meaning here.
const disableNotificationSetting = () => {
  try {
    const {style} = document.getElementById(NOTIFICATION_SETTING_ID);
    style.pointerEvents = 'none';
    style.opacity = '0.6';
  } catch {
    console.log('Failed to disable notification button');
  }
};

// Shown again as it was left: the program knows the page that was shown meanwhile, and takes one that comes
// for a new one.
window.addEventListener('pageshow', ({persisted}) => {
  lastWriting = 'false';
  if (persisted) {
    last = '';
    lastMsgId = '';
  }
});

setInterval(() => {
  try {
    const router = applicationRouter();
    reportTitle(router);
    reportMessage(router);
    reportWriting(router.appController.draft);
    if (router.app === 'settings') {
      disableNotificationSetting();
    }
  } catch {
    // So it is while the application is still loading.
    console.log('Failed to grab the email subject');
  }
}, POLL_MS);
