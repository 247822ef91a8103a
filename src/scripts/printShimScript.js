// Printing is the program's matter: the page only asks for it.
(() => {
  'use strict';

  window.print = () => {
    window.webkit.messageHandlers.ondrel.postMessage({type: 'print'});
  };
})();
