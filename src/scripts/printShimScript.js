// Printing is the program's matter: the page only asks for it.

window.print = () => {
  post({type: 'print'});
};
