// The page may notify, as far as it can tell, and shows nothing: the program posts the notifications itself.

function FakeNotification(title, options) {}

FakeNotification.permission = 'granted';
FakeNotification.requestPermission = (callback) => {
  if (typeof callback === 'function') {
    callback('granted');
  }
  return Promise.resolve('granted');
};

Object.defineProperty(window, 'Notification', {configurable: true, get: () => FakeNotification});
