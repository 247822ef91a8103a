// However often the result is called, the action runs once in that time, also while the calls go on.
const throttle = (action, milliseconds) => {
  let isScheduled = false;
  return () => {
    if (isScheduled) {
      return;
    }
    isScheduled = true;
    setTimeout(() => {
      isScheduled = false;
      action();
    }, milliseconds);
  };
};
