// Folder tree beside a result document.
//
// The tree page loads this library, then the script of its run, which fills the tree with
// gFld, gLnk, insFld and insDoc, and last calls initializeDocument. Labels are names from a
// user's files and are shown as plain text, whatever they hold.
"use strict";

// Settings, which the script of a run sets again.
var USETEXTLINKS = 1;   // 1: a folder's label opens its page; 0: only the folder opens
var STARTALLOPEN = 0;   // 1: all folders are open at first
var WRAPTEXT = 1;       // 1: long labels are wrapped
var PRESERVESTATE = 0;  // 1: open folders are remembered while the window stands
var HIGHLIGHT = 1;      // 1: the entry opened last is marked
var ICONPATH = "";      // folders are marked by characters; no icon files are needed

// The root, and the last folder of each level. The scripts of appended runs assign them
// anew; an entry whose folder is missing goes to the nearest one above it.
var foldersTree;
var aux1, aux2, aux3, aux4, aux5, aux6, aux7, aux8, aux9;

var tree = (function () {
  var scriptFolder = document.currentScript ? document.currentScript.src.replace(/[^\/]*$/, "") : "";
  var folderNumber = 0;
  var current = null;

  function loadStyle() {
    var link = document.createElement("link");
    link.rel = "stylesheet";
    link.href = scriptFolder + "ftie4style.css";
    document.head.appendChild(link);
  }

  // The script of a run states no encoding: names in UTF-8 arrive as if they were Western
  // European single bytes, and are read again here. Any other text stays as it is.
  var bytesOfCharacters = null;
  function inUtf8(text) {
    if (typeof TextDecoder === "undefined" || /^[\x00-\x7f]*$/.test(text)) return text;
    if (!bytesOfCharacters) {
      bytesOfCharacters = {};
      var western = new TextDecoder("windows-1252");
      for (var i = 0; i < 256; ++i) bytesOfCharacters[western.decode(new Uint8Array([i]))] = i;
    }
    var bytes = text.split("").map(function (c) { return bytesOfCharacters[c]; });
    if (bytes.indexOf(undefined) >= 0) return text;
    try { return new TextDecoder("utf-8", { fatal: true }).decode(new Uint8Array(bytes)); } catch (e) { return text; }
  }

  // A label may stand between <i> and </i>; all else is text.
  function showLabel(element, label) {
    var italic = /^<i>([\s\S]*)<\/i>$/.exec(label);
    if (italic) {
      element.classList.add("run-title");
      label = italic[1];
    }
    element.textContent = inUtf8(label);
  }

  function mark(link) {
    if (!HIGHLIGHT) return;
    if (current) current.removeAttribute("aria-current");
    link.setAttribute("aria-current", "true");
    current = link;
  }

  function makeLink(node) {
    var link = document.createElement("a");
    link.href = node.target;
    link.target = "basefrm";
    link.addEventListener("click", function () { mark(link); });
    showLabel(link, node.label);
    return link;
  }

  function storageKey(id) { return "tree " + location.pathname + " " + id; }

  function wasOpen(id) {
    if (!PRESERVESTATE) return null;
    try { return sessionStorage.getItem(storageKey(id)); } catch (e) { return null; }
  }

  function remember(id, open) {
    if (!PRESERVESTATE) return;
    try { sessionStorage.setItem(storageKey(id), open ? "1" : "0"); } catch (e) { /* not kept */ }
  }

  function setOpen(button, list, open) {
    button.setAttribute("aria-expanded", open ? "true" : "false");
    list.hidden = !open;
  }

  function makeFolderLine(item, node, list, open) {
    var id = list.id;
    var button = document.createElement("button");
    button.type = "button";
    button.setAttribute("aria-controls", id);
    setOpen(button, list, open);
    button.addEventListener("click", function () {
      var opens = list.hidden;
      setOpen(button, list, opens);
      remember(id, opens);
    });
    item.appendChild(button);
    if (node.target && USETEXTLINKS) {
      var link = makeLink(node);
      button.setAttribute("aria-label", "Contents of " + link.textContent);
      item.appendChild(link);
    } else {
      var text = document.createElement("span");
      showLabel(text, node.label);
      button.appendChild(text);
    }
  }

  function makeFolder(node, isRoot) {
    var item = document.createElement("li");
    item.className = "folder";
    var list = document.createElement("ul");
    list.id = "folder" + folderNumber++;
    var stored = wasOpen(list.id);
    makeFolderLine(item, node, list, stored === null ? isRoot || Boolean(STARTALLOPEN) : stored === "1");
    node.children.forEach(function (child) {
      list.appendChild(child.children ? makeFolder(child, false) : makeLeaf(child));
    });
    item.appendChild(list);
    return item;
  }

  function makeLeaf(node) {
    var item = document.createElement("li");
    item.className = "leaf";
    item.appendChild(makeLink(node));
    return item;
  }

  function draw(root) {
    loadStyle();
    var nav = document.createElement("nav");
    nav.setAttribute("aria-label", "Results");
    nav.className = WRAPTEXT ? "tree" : "tree nowrap";
    if (root) {
      var list = document.createElement("ul");
      list.appendChild(makeFolder(root, true));
      nav.appendChild(list);
    } else {
      nav.textContent = "The tree of this result document is empty.";
    }
    document.body.appendChild(nav);
  }

  return { draw: draw };
})();

// A folder with its page, which may be "".
function gFld(label, target) {
  return { label: String(label), target: String(target || ""), children: [] };
}

// A leaf with its page; the kind "R" opens it in the right frame, the only one there is.
function gLnk(kind, label, target) {
  return { label: String(label), target: String(target || ""), children: null };
}

// Puts an entry into a folder, which may be missing; returns the entry.
function insFld(folder, entry) {
  var parent = folder || foldersTree;
  if (parent) parent.children.push(entry);
  return entry;
}

function insDoc(folder, entry) {
  return insFld(folder || aux3 || aux2 || aux1, entry);
}

// Draws the tree at the end of the page.
function initializeDocument() {
  if (typeof treeSupport !== "undefined" && !treeSupport.elements) {
    document.write("This browser can't show the tree; open the result document itself.");
    return;
  }
  tree.draw(foldersTree);
}
