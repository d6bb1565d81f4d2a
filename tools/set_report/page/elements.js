// Elements and texts. A text from a set becomes a text node or an attribute here. It never becomes markup.

const SVG = "http://www.w3.org/2000/svg";
const LongestText = 400; // characters. A longer text would slow down each layout, so it is cut. The details show the whole text.

function element(name, attributes = {}, ...children) {
  return filled(document.createElement(name), attributes, children);
}

function drawn(name, attributes = {}, ...children) {
  return filled(document.createElementNS(SVG, name), attributes, children);
}

function filled(made, attributes, children) {
  for (const [name, value] of Object.entries(attributes)) {
    if (name.startsWith("on")) made.addEventListener(name.slice(2), value);
    else if (value === true) made.setAttribute(name, "");
    else if (value !== false && value !== undefined) made.setAttribute(name, value);
  }
  made.append(...children.filter(child => child !== undefined && child !== null));
  return made;
}

const byId = id => document.getElementById(id);

function button(text, onclick, attributes = {}) {
  return element("button", { type: "button", onclick, ...attributes }, text);
}

// Fills the list with terms and descriptions. A pair without a description is left out.
function descriptions(list, pairs) {
  list.replaceChildren(...pairs.filter(pair => pair[1] !== undefined && pair[1] !== "")
    .flatMap(([term, text]) => [element("dt", {}, term), element("dd", {}, text)]));
}

function listed(list, texts) {
  list.hidden = texts.length === 0;
  list.replaceChildren(...texts.map(text => element("li", {}, text)));
}

// A small table. All its rows are elements. A cell is a text or an element.
function simpleTable(caption, columns, rows) {
  const head = columns.map(({ title, number, wide }) =>
    element("th", { scope: "col", class: classes("plain", number && "number", wide && "wide") }, title));
  const cell = (content, { number, wide }) => element("td", { class: classes(number && "number", wide && "wide") }, content);
  return element("table", { class: "simple" }, element("caption", { class: "spoken" }, caption),
    element("thead", {}, element("tr", {}, ...head)),
    element("tbody", {}, ...rows.map(row => element("tr", {}, ...row.map((content, at) => cell(content, columns[at]))))));
}

const classes = (...names) => names.filter(Boolean).join(" ") || undefined;

const whole = new Intl.NumberFormat("en-US");
const rounded = new Intl.NumberFormat("en-US", { minimumSignificantDigits: 3, maximumSignificantDigits: 3 });

const count = number => whole.format(number);
const counted = (number, thing) => `${count(number)} ${thing}${number === 1 ? "" : "s"}`;

function size(bytes) {
  if (bytes < 0) return "unknown";
  let unit = 0;
  let number = bytes;
  for (; number >= 999.5 && unit < 4; unit++) number /= 1000;
  return unit === 0 ? counted(bytes, "byte") : `${rounded.format(number)} ${["", "KB", "MB", "GB", "TB"][unit]}`;
}

const shortened = text => text.length > LongestText ? text.slice(0, LongestText) + "…" : text;

const narrow = matchMedia("(max-width: 40rem)"); // the same width as in style.css

// A narrow window has room only for the last part of a path.
function pathText(path) {
  const at = path.lastIndexOf("\\");
  return narrow.matches && at > 0 ? `…${path.slice(at)}` : path;
}

// Shows the details of something in a dialog. When the dialog closes, the focus returns to where it was before.
function showDetails(title, ...content) {
  byId("details-title").replaceChildren(title);
  byId("details-body").replaceChildren(...content);
  byId("details").showModal();
}

function fieldList(pairs) {
  const list = element("dl", { class: "fields" });
  descriptions(list, pairs);
  return list;
}
