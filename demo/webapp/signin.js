// After the sign-in, back to the page that was asked for.
document.querySelector("input[name=next]").value = location.pathname + location.search;
