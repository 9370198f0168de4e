// Tells the folder tree what the browser can do.
"use strict";

var treeSupport = {
  // The tree is built from elements; without this it can't be drawn at all.
  elements: typeof document !== "undefined" && "createElement" in document && "classList" in document.documentElement,
};
