"use strict";
const tellHeight = () =>
    parent.postMessage({frameHeight: Math.ceil(document.body.getBoundingClientRect().height)}, "*");
addEventListener("load", tellHeight);
addEventListener("resize", tellHeight);
