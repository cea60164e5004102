// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A page that opens record set text or CSV, shows where it is faulty or what is in it, sorts, follows nested
// sets and saves. It draws the rows that are in sight, cell by cell from the record set; whole columns
// are taken for sorting only.
import { openLibrary } from "./qxrecordset/web.js";

const $ = (id) => document.getElementById(id);
const grid = $("grid"), head = $("head"), body = $("body");
const opened = openLibrary();

const PAGE_HEIGHT = 8e6; // browsers place nothing beyond about twice as many pixels
const AROUND = 8; // rows drawn above and below what is in sight
const PASTE_LIMIT = 3e5; // units that a text area shows without delay

let levels = []; // the record set and the nested ones that are open, the last one shown
const shown = () => levels.at(-1);

// ---- Text in ------------------------------------------------------------------------------------

function showText(given, name) {
  const begin = performance.now();
  const text = given.replace(/^\ufeff/, ""); // a byte order mark
  return opened.then(({ RecordSet }) => {
    const set = new RecordSet();
    const result = /^\s*[{[]/.test(text) ? set.load(text) : loadCsv(text, set);
    const { rowCount } = set;
    if (!result.ok || rowCount === 0) {
      set.free();
      showFault(text, result.ok ? { reason: nothingIn(text) } : result);
      return;
    }
    while (levels.length > 0) levels.pop().set.free();
    levels.push(levelOf(set, name));
    history.pushState(1, "");
    showLosses(result.losses);
    showTable();
    const took = Math.round(performance.now() - begin);
    say(`${numbered(rowCount, "row")}, ${numbered(set.columnNames.length, "column")}, shown in ${took} ms.`);
  }).catch((error) => showFault(text, { reason: error.message }));
}

const numbered = (count, word) => `${count.toLocaleString("en")} ${word}${count === 1 ? "" : "s"}`;

const nothingIn = (text) => (text.trim() === "" ? "there is no text yet" : "there are no cells in it");

// The fields of CSV with their places, by lines; or a fault.
function readCsv(text) {
  const first = text.slice(0, (text + "\n").indexOf("\n"));
  const [separator] = [",", ";", "\t"].sort((a, b) => first.split(b).length - first.split(a).length);
  const lines = [[]];
  let at = 0;
  while (at < text.length) {
    const begin = at;
    let field = "";
    if (text[at] === '"') {
      let end = at;
      do {
        const from = end + 1;
        end = text.indexOf('"', from);
        if (end < 0) return { fault: begin, reason: "a quote that nothing ends" };
        field += text.slice(from, end) + (text[end + 1] === '"' ? '"' : "");
        if (text[end + 1] === '"') ++end;
        else break;
      } while (true);
      at = end + 1;
      if (at < text.length && !`${separator}\r\n`.includes(text[at])) {
        return { fault: at, reason: "expected the end of the field" };
      }
    } else {
      while (at < text.length && text[at] !== separator && text[at] !== "\n" && text[at] !== "\r") ++at;
      field = text.slice(begin, at);
    }
    lines.at(-1).push(field);
    if (lines.length > 1 && lines.at(-1).length > lines[0].length) {
      return { fault: begin, reason: `there are ${lines[0].length} columns, this is one more` };
    }
    if (text[at] === separator) {
      if (++at === text.length) lines.at(-1).push("");
      continue;
    }
    if (text[at] === "\r") ++at;
    if (text[at] === "\n") ++at;
    if (at < text.length) lines.push([]);
  }
  return { lines };
}

function loadCsv(text, set) {
  const { lines, fault, reason } = readCsv(text);
  if (lines === undefined) {
    const before = text.slice(0, fault);
    const column = fault - before.lastIndexOf("\n");
    return { ok: false, reason, offset: fault, line: before.split("\n").length, column };
  }
  const [names, ...rows] = lines;
  names.forEach((name, i) => {
    const column = set.addColumn(name === "" ? `column ${i + 1}` : name);
    const fields = rows.map((row) => row[i] ?? "");
    const isInteger = fields.every((field) => field === "" || (/^(0|-?[1-9]\d*)$/.test(field) && (field | 0) == field));
    fields.forEach((field, row) => set.set(row + 1, column, field === "" ? null : isInteger ? Number(field) : field));
  });
  return { ok: true, losses: set.losses };
}

function showFault(text, { reason, line, column }) {
  const box = $("fault");
  box.replaceChildren();
  const title = document.createElement("strong");
  title.textContent = reason[0].toUpperCase() + reason.slice(1) + ".";
  box.append(title);
  if (line !== undefined) {
    title.before(`Line ${line.toLocaleString("en")}, column ${column.toLocaleString("en")}: `);
    box.append(excerpt(text.split("\n", line).at(-1), line, column));
    if ($("text").value === text) box.append(showButton(text, line, column));
  }
  box.hidden = false;
  $("start").hidden = false;
  $("table").hidden = true;
}

// The line around the fault with a caret below. Space as wide as the text in front puts it there.
function excerpt(text, line, column) {
  const from = Math.max(0, column - 1 - 36);
  const before = (from > 0 ? "…" : "") + text.slice(from, column - 1).replace(/\t/g, " ");
  const after = text.slice(column - 1, column + 30).replace(/[\t\r]/g, " ") + (text.length > column + 30 ? "…" : "");
  const pre = document.createElement("pre");
  const span = (kind, content) => Object.assign(document.createElement("span"), { className: kind, textContent: content });
  pre.append(span("number", `${line} │ `), before, after, "\n",
             span("space", `${line} │ ${before}`), span("caret", "^"));
  return pre;
}

function showButton(text, line, column) {
  const button = Object.assign(document.createElement("button"), { type: "button", textContent: "Go there" });
  button.onclick = () => {
    const begin = text.split("\n", line - 1).reduce((sum, one) => sum + one.length + 1, 0);
    const at = begin + column - 1;
    $("text").focus();
    $("text").setSelectionRange(at, Math.min(at + 1, text.length));
  };
  return button;
}

function showLosses(losses) {
  const words = [["reals", "real number"], ["arrays", "array"], ["cut", "text cut at a NUL"], ["limited", "integer beyond 32 bits"]];
  const parts = words.filter(([key]) => losses[key] > 0).map(([key, word]) =>
    key === "cut" ? `${losses[key]} ${word}` : numbered(losses[key], word));
  $("losses").hidden = losses.cells === 0;
  $("losses").textContent = `${numbered(losses.cells, "cell")} could not hold what the text says: ${parts.join(", ")}. ` +
    `The first is in row ${losses.firstRow}, column “${losses.firstColumn}”.`;
}

// ---- Levels -------------------------------------------------------------------------------------

function levelOf(set, name) {
  const names = set.columnNames;
  return { set, name, names, count: set.rowCount, order: null, sort: null, active: { row: 0, column: 0 },
           scroll: [0, 0], kinds: names.map((_, i) => set.type(firstWithCell(set, i + 1), i + 1)) };
}

function firstWithCell(set, column) {
  const most = Math.min(set.rowCount, 100);
  for (let row = 1; row <= most; ++row) {
    const type = set.type(row, column);
    if (type !== undefined && type !== "null") return row;
  }
  return 1;
}

// The number of the row that stands in a place from 0.
const rowAt = (level, place) => (level.order ? level.order[place] : place) + 1;

function openNested(place, column) {
  const level = shown();
  const row = rowAt(level, place);
  if (level.set.type(row, column + 1) !== "recordset") return;
  const set = level.set.nested(row, column + 1);
  if (set === undefined || set.rowCount === 0) {
    set?.free();
    say("The nested set is empty.");
    return;
  }
  level.scroll = [grid.scrollLeft, grid.scrollTop];
  levels.push(levelOf(set, `${level.names[column]} of row ${row.toLocaleString("en")}`));
  history.pushState(levels.length, "");
  showTable();
  say(`Opened ${shown().name}: ${numbered(set.rowCount, "row")}.`);
}

function leaveTo(depth) {
  if (depth < 1) {
    $("table").hidden = $("tools").hidden = $("path").hidden = true;
    $("start").hidden = false;
    $("text").focus();
    return;
  }
  while (levels.length > depth) levels.pop().set.free();
  showTable();
  [grid.scrollLeft, grid.scrollTop] = shown().scroll;
  say(`Back in ${shown().name}.`);
}

window.onpopstate = ({ state }) => {
  if (levels.length > 0) leaveTo(Math.min(state ?? 0, levels.length));
};

function showPath() {
  const items = levels.map(({ name }, i) => {
    const item = document.createElement("li");
    const isLast = i === levels.length - 1;
    const part = document.createElement(isLast ? "span" : "button");
    part.textContent = name;
    if (isLast) part.setAttribute("aria-current", "page");
    else part.onclick = () => history.go(i + 1 - levels.length);
    item.append(part);
    return item;
  });
  $("path").querySelector("ol").replaceChildren(...items);
}

// ---- The table ----------------------------------------------------------------------------------

function showTable() {
  $("fault").hidden = $("start").hidden = true;
  $("table").hidden = $("tools").hidden = $("path").hidden = false;
  const level = shown();
  grid.setAttribute("aria-rowcount", level.count + 1);
  grid.setAttribute("aria-colcount", level.names.length + 1);
  $("count").textContent = `${numbered(level.count, "row")}, ${numbered(level.names.length, "column")}`;
  showPath();
  setWidths(level);
  [grid.scrollLeft, grid.scrollTop] = [0, 0];
  draw(true);
  grid.focus({ preventScroll: true });
}

// Each column is as wide as what the first rows hold, within bounds.
function setWidths(level) {
  const widths = level.names.map((name, i) => {
    let most = name.length + 3;
    for (let row = 1; row <= Math.min(level.count, 60); ++row) {
      most = Math.max(most, textOf(level, row, i).text.length);
    }
    return Math.min(Math.max(most, 5), 34);
  });
  const digits = Math.max(level.count.toLocaleString("en").length, 3);
  const places = [digits, ...widths].map((width) => `calc(${width}ch + 28px)`);
  places[places.length - 1] = `minmax(${places.at(-1)}, 1fr)`;
  grid.style.setProperty("--columns", places.join(" "));
  const sum = widths.reduce((total, width) => total + width, digits);
  grid.style.setProperty("--width", `calc(${sum}ch + ${28 * places.length}px)`);
}

const rowHeight = () => parseFloat(getComputedStyle(grid).getPropertyValue("--row"));

function element(role, kind, text) {
  const made = document.createElement("div");
  made.setAttribute("role", role);
  made.className = kind;
  made.textContent = text;
  return made;
}

function drawHead(level) {
  const row = element("row", "", "");
  row.setAttribute("aria-rowindex", 1);
  const corner = element("columnheader", "corner", "");
  corner.setAttribute("aria-label", "Row");
  row.append(corner);
  level.names.forEach((name, i) => {
    const cell = element("columnheader", level.kinds[i] === "integer" ? "number" : "", "");
    cell.append(Object.assign(document.createElement("span"), { className: "label", textContent: name, title: name }));
    cell.id = `h${i}`;
    cell.setAttribute("aria-colindex", i + 2);
    cell.setAttribute("aria-sort", level.sort?.column === i ? (level.sort.down ? "descending" : "ascending") : "none");
    cell.onclick = () => { activate(-1, i); sortBy(i); };
    row.append(cell);
  });
  head.replaceChildren(row);
}

// What a cell shows, and the class that it has.
function textOf(level, row, column) {
  const type = level.set.type(row, column + 1);
  const text = level.set.cellText(row, column + 1) ?? "";
  switch (type) {
    case "integer": return { text, kind: "number" };
    case "null": return { text: "null", kind: "null" };
    case "boolean": return { text: text === "1" ? "true" : "false", kind: "" };
    case "recordset": return { text: preview(text), kind: "nested" };
    default: return { text, kind: "" };
  }
}

// A nested set in a few words.
function preview(text) {
  if (text.length > 400) return text;
  const value = text === "" ? {} : JSON.parse(text);
  if (Array.isArray(value.rows)) return numbered(value.rows.length, "row");
  const word = (one) => (one !== null && typeof one === "object" ? "…" : String(one));
  return Object.entries(value).map(([name, one]) => `${name} ${word(one)}`).join(", ") || "empty";
}

function drawCell(level, place, row, column) {
  const { text, kind } = textOf(level, row, column);
  const cell = element("gridcell", kind, text);
  if (text.length > 30) cell.title = text.slice(0, 2000);
  cell.id = `c${place}-${column}`;
  cell.setAttribute("aria-colindex", column + 2);
  return cell;
}

let drawn = { first: -1, last: -1 };

// Draws the rows in sight. Where there are more rows than a page can be high, scrolling skips some.
function draw(anew = false) {
  const level = shown();
  if (level === undefined) return;
  const height = rowHeight();
  const all = level.count * height;
  const used = Math.min(all, PAGE_HEIGHT);
  if (anew) {
    body.style.height = `${used}px`;
    drawHead(level);
    drawn = { first: -1, last: -1 };
  }
  const inSight = grid.clientHeight - head.offsetHeight;
  const scale = used > inSight ? (all - inSight) / (used - inSight) : 1;
  const top = Math.max(0, grid.scrollTop) * scale;
  const first = Math.max(0, Math.floor(top / height) - AROUND);
  const last = Math.min(level.count, Math.ceil((top + inSight) / height) + AROUND);
  if (first === drawn.first && last === drawn.last && scale === 1) return;
  const shift = grid.scrollTop - top;
  const old = new Map([...body.children].map((row) => [Number(row.dataset.place), row]));
  for (const [place, row] of old) if (anew || place < first || place >= last) row.remove();
  for (let place = first; place < last; ++place) {
    const kept = anew ? undefined : old.get(place);
    const row = kept ?? drawRow(level, place);
    row.style.transform = `translateY(${place * height + shift}px)`;
    if (!kept) body.append(row);
  }
  drawn = { first, last };
  markActive();
}

function drawRow(level, place) {
  const number = rowAt(level, place);
  const row = element("row", place % 2 === 1 ? "odd" : "", "");
  row.dataset.place = place;
  row.setAttribute("aria-rowindex", place + 2);
  const header = element("rowheader", "", number.toLocaleString("en"));
  header.setAttribute("aria-colindex", 1);
  row.append(header, ...level.names.map((_, column) => drawCell(level, place, number, column)));
  return row;
}

let waiting = false;
grid.addEventListener("scroll", () => {
  if (waiting) return;
  waiting = true;
  requestAnimationFrame(() => {
    waiting = false;
    draw();
  });
}, { passive: true });
new ResizeObserver(() => draw()).observe(grid);
matchMedia("(max-width: 620px)").addEventListener("change", () => draw(true));

// ---- The active cell ----------------------------------------------------------------------------

function markActive() {
  const { row, column } = shown().active;
  for (const cell of grid.querySelectorAll(".active")) cell.classList.remove("active");
  const cell = $(row < 0 ? `h${column}` : `c${row}-${column}`);
  cell?.classList.add("active");
  if (cell) grid.setAttribute("aria-activedescendant", cell.id);
  else grid.removeAttribute("aria-activedescendant");
  return cell;
}

// Makes a cell the active one (row -1 is the head) and brings it into sight.
function activate(row, column) {
  const level = shown();
  level.active = { row: Math.max(-1, Math.min(level.count - 1, row)),
                   column: Math.max(0, Math.min(level.names.length - 1, column)) };
  if (level.active.row >= 0) scrollToRow(level, level.active.row);
  draw();
  const cell = markActive();
  if (!cell) return;
  const fixed = head.querySelector(".corner").offsetWidth;
  const left = cell.offsetLeft - fixed;
  if (left < grid.scrollLeft) grid.scrollLeft = left;
  else if (cell.offsetLeft + cell.offsetWidth > grid.scrollLeft + grid.clientWidth) {
    grid.scrollLeft = Math.min(left, cell.offsetLeft + cell.offsetWidth - grid.clientWidth);
  }
}

function scrollToRow(level, row) {
  const height = rowHeight();
  const all = level.count * height;
  const inSight = grid.clientHeight - head.offsetHeight;
  const scale = all > PAGE_HEIGHT ? (all - inSight) / (PAGE_HEIGHT - inSight) : 1;
  const top = grid.scrollTop * scale;
  if (row * height < top) grid.scrollTop = (row * height) / scale;
  else if ((row + 1) * height > top + inSight) grid.scrollTop = ((row + 1) * height - inSight) / scale;
}

grid.addEventListener("keydown", (event) => {
  const { row, column } = shown().active;
  const page = Math.max(1, Math.floor((grid.clientHeight - head.offsetHeight) / rowHeight()) - 1);
  const whole = event.ctrlKey || event.metaKey;
  const moves = {
    ArrowUp: [row - 1, column], ArrowDown: [row + 1, column], ArrowLeft: [row, column - 1], ArrowRight: [row, column + 1],
    PageUp: [Math.max(0, row - page), column], PageDown: [row + page, column],
    Home: [whole ? 0 : row, 0], End: [whole ? Infinity : row, Infinity],
  };
  if (moves[event.key]) activate(...moves[event.key]);
  else if (event.key === "Enter" || event.key === " ") {
    if (row < 0) sortBy(column);
    else openNested(row, column);
  } else if (event.key === "Escape") history.back();
  else return;
  event.preventDefault();
  grid.classList.add("keys");
});

body.addEventListener("click", ({ target }) => {
  const cell = target.closest('[role="gridcell"]');
  if (!cell) return;
  grid.classList.remove("keys");
  const place = Number(cell.parentElement.dataset.place);
  const column = Number(cell.getAttribute("aria-colindex")) - 2;
  activate(place, column);
  if (cell.classList.contains("nested")) openNested(place, column);
});

// ---- Sorting ------------------------------------------------------------------------------------

// What compares two places of a column, nulls apart. Texts that all are numbers are compared as such.
function comparerOf({ type, values, valid }) {
  if (type !== "text" && type !== "recordset") return (a, b) => values[a] - values[b];
  const numbers = Float64Array.from(values, (text) => (text === null || text.trim() === "" ? NaN : Number(text)));
  if (values.every((text, i) => text === null || !Number.isNaN(numbers[i]))) return (a, b) => numbers[a] - numbers[b];
  // The place of each different text among them is found once.
  const { compare } = new Intl.Collator("en", { numeric: true });
  const different = [...new Set(values)].filter((text) => text !== null).sort(compare);
  const places = new Map(different.map((text, i) => [text, i]));
  const ranks = Int32Array.from(values, (text, i) => (valid?.[i] === 0 ? 0 : places.get(text)));
  return (a, b) => ranks[a] - ranks[b];
}

// Up, then down, then as in the text. What is null or missing comes last in both.
function sortBy(index) {
  const level = shown();
  const before = level.sort?.column === index ? level.sort : null;
  level.sort = before === null ? { column: index, down: false } : before.down ? null : { column: index, down: true };
  if (level.sort === null) {
    level.order = null;
  } else {
    const column = level.set.column(index + 1);
    const compare = comparerOf(column);
    const all = Int32Array.from({ length: level.count }, (_, i) => i);
    const { valid } = column;
    const filled = valid ? all.filter((i) => valid[i] === 1) : all;
    filled.sort(level.sort.down ? (a, b) => compare(b, a) || a - b : (a, b) => compare(a, b) || a - b);
    level.order = new Int32Array(level.count);
    level.order.set(filled);
    if (valid) level.order.set(all.filter((i) => valid[i] === 0), filled.length);
  }
  grid.scrollTop = 0;
  draw(true);
  const how = level.sort === null ? "In the order of the text" : `Sorted by ${level.names[index]}, ${level.sort.down ? "descending" : "ascending"}`;
  say(`${how}.`);
}

// ---- Text out -----------------------------------------------------------------------------------

$("save").onclick = () => {
  const url = URL.createObjectURL(new Blob([levels[0].set.bytes()], { type: "application/json" }));
  const name = levels[0].name.replace(/\.[a-z]+$/i, "") + ".json";
  Object.assign(document.createElement("a"), { href: url, download: name }).click();
  setTimeout(() => URL.revokeObjectURL(url), 10000);
  say(`Downloaded ${name}.`);
};

$("copy").onclick = async () => {
  try {
    await navigator.clipboard.writeText(levels[0].set.text());
    say("Copied the text.");
    $("copy").textContent = "Copied";
  } catch {
    say("The browser does not allow copying.");
    $("copy").textContent = "Not allowed";
  }
  setTimeout(() => { $("copy").textContent = "Copy text"; }, 1500);
};

$("back").onclick = () => history.go(-levels.length);

// ---- The ways in --------------------------------------------------------------------------------

function say(text) {
  $("status").textContent = text;
}

$("form").onsubmit = (event) => {
  event.preventDefault();
  showText($("text").value, "text");
};
$("text").onpaste = (event) => {
  const pasted = event.clipboardData.getData("text/plain");
  if (pasted.length < PASTE_LIMIT || $("text").value !== "") return;
  event.preventDefault();
  showText(pasted, "pasted text");
};
$("text").onkeydown = (event) => {
  if (event.key === "Enter" && (event.ctrlKey || event.metaKey)) $("form").requestSubmit();
};
$("open").onclick = () => $("file").click();
$("file").onchange = () => {
  takeFile($("file").files[0]);
  $("file").value = "";
};

async function takeFile(file) {
  if (!file) return;
  const text = await file.text();
  $("text").value = text.length < PASTE_LIMIT ? text : "";
  showText(text, file.name);
}

const hasFile = ({ dataTransfer }) => dataTransfer.types.includes("Files");
window.ondragover = (event) => {
  if (!hasFile(event)) return;
  event.preventDefault();
  $("drop").hidden = false;
};
window.ondragleave = (event) => { if (event.relatedTarget === null) $("drop").hidden = true; };
window.ondrop = (event) => {
  if (!hasFile(event)) return;
  event.preventDefault();
  $("drop").hidden = true;
  takeFile(event.dataTransfer.files[0]);
};

// ---- Samples ------------------------------------------------------------------------------------

const SMALL = `{"rows":[
  {"paper":"A3","width":297,"height":420,"round":false,"sold":{"year":2025,"sheets":88210}},
  {"paper":"A4","width":210,"height":297,"round":false,"sold":{"year":2025,"sheets":1480500}},
  {"paper":"A5","width":148,"height":210,"round":false,"sold":null},
  {"paper":"beer mat","width":93,"height":93,"round":true,"sold":{"year":2025,"sheets":63000}}
]}
`;
const FAULTY = SMALL.replace('"A5","width":148', '"A5","width":l48');
const CITIES = ["Graz", "Linz", "Wien", "Innsbruck", "Gmünd", "São Paulo", "東京", "Zürich", "Kraków", "Oslo"];

function largeSample() {
  let state = 7;
  const random = (below) => (state = (Math.imul(state, 1103515245) + 12345) & 0x7fffffff) % below;
  const rows = Array.from({ length: 100000 }, (_, i) => ({
    order: 700001 + i, city: CITIES[random(9973) % 10], customer: `Customer ${random(20011)}`, cents: random(999983),
    paid: random(101) < 80, note: random(13) === 0 ? "call before delivery" : null,
    parcel: { kilos: random(29) + 1, from: CITIES[random(9967) % 10], size: { width: random(61) + 10, height: random(41) + 5 } } }));
  return JSON.stringify({ rows });
}

for (const button of document.querySelectorAll("[data-sample]")) {
  button.onclick = () => {
    const kind = button.dataset.sample;
    if (kind === "large") return showText(largeSample(), "100,000 orders");
    $("text").value = kind === "small" ? SMALL : FAULTY;
    return showText($("text").value, "papers");
  };
}
