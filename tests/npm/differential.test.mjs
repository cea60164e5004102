// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Generated tables: rows, columns, cells and text agree with what JSON.parse makes of the same text, and
// any text at all is taken or refused without a trap.
import assert from "node:assert/strict";
import { test } from "node:test";
import { openLibrary } from "qxrecordset";

const { RecordSet, Document } = await openLibrary();
const TABLES = Number(process.env.TABLES ?? 400);

// A generator of numbers below `below`, the same in each run.
let state = 20240229;
function random(below) {
  state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
  return Math.floor((state / 2 ** 32) * below);
}
const oneOf = (list) => list[random(list.length)];

const PIECES = ["a", "Z", " ", '"', "\\", "/", "\n", "\u001f", "é", "漢", "😀", "\ud800", "\udc01", "\ufffd", "0", "{"];
const string = (most) => Array.from({ length: random(most) }, () => oneOf(PIECES)).join("");

// Texts that begin like an object are written as one: none of these does.
const text = () => { const made = string(random(10) === 0 ? 60 : 6); return made.trimStart().startsWith("{") ? "." + made : made; };
const integer = () => oneOf([0, 1, -1, 9, 2147483647, -2147483648, random(1e6), -random(2e9)]);
const nested = () => Object.fromEntries(Array.from({ length: random(3) }, () => [string(5), oneOf([1, "x", true, { y: text() }])]));
const KINDS = [integer, text, () => random(2) === 0, () => null, nested, () => text().slice(0, 1), () => oneOf([text, integer])()];

function table() {
  const columns = Array.from({ length: 1 + random(oneOf([3, 12])) }, () => ({ name: string(8), make: oneOf(KINDS),
                                                                   gaps: random(3) === 0, nulls: random(3) === 0 }));
  const rows = Array.from({ length: 2 + random(oneOf([3, 40, 3000])) }, () => {
    const row = {};
    for (const { name, make, gaps, nulls } of columns) {
      if (gaps && random(3) === 0) continue;
      row[name] = nulls && random(4) === 0 ? null : make();
    }
    return row;
  });
  while (rows.length > 0 && Object.keys(rows.at(-1)).length === 0) rows.pop(); // a record set ends with its last cell
  return rows;
}

const short = (json) => (json.length < 500 ? json : `${json.length} characters: ${json.slice(0, 500)}`);

// With escapes in some places where JSON.stringify writes the character.
const escapesOf = (character) => [...Array(character.length).keys()].map((i) =>
  "\\u" + character.charCodeAt(i).toString(16).padStart(4, "0")).join("");
const escaped = (json) => json.replace(/[^\x00-\x7f]/gu, (character) =>
  (random(2) === 0 ? character : escapesOf(character)));

// JSON text as the library writes it, which escapes no surrogates.
const jsonOf = (value) => JSON.stringify(value).replace(/\\u(d[89a-f]..)/g, (_, hex) => String.fromCharCode(parseInt(hex, 16)));

// What column() gives, made the plain way.
function columnOf(rows, name) {
  const cells = rows.map((row) => (Object.hasOwn(row, name) ? row[name] : null));
  const kinds = new Set(cells.filter((cell) => cell !== null).map((cell) => typeof cell));
  const valid = cells.includes(null) ? Uint8Array.from(cells, (cell) => (cell === null ? 0 : 1)) : null;
  const textOf = (cell) => (cell === null ? null : typeof cell === "object" ? jsonOf(cell)
    : typeof cell === "boolean" ? (cell ? "1" : "0") : String(cell));
  const [kind, ...more] = kinds;
  if (kind === undefined) return { type: "null", values: cells, valid };
  if (more.length === 0 && kind === "number") return { type: "integer", values: Int32Array.from(cells), valid };
  if (more.length === 0 && kind === "boolean") return { type: "boolean", values: Uint8Array.from(cells), valid };
  return { type: more.length === 0 && kind === "object" ? "recordset" : "text", values: cells.map(textOf), valid };
}

test(`${TABLES} tables agree with JSON.parse`, () => {
  for (let i = 0; i < TABLES; ++i) {
    const rows = table();
    const json = escaped(JSON.stringify({ rows }));
    const set = RecordSet.parse(json);
    assert.equal(set.losses.cells, 0, short(json));
    const parsed = JSON.parse(json).rows;
    assert.deepEqual(set.rows(), parsed, short(json));
    for (const name of set.columnNames) {
      const { type, values, valid } = set.column(name);
      assert.deepEqual({ type, values, valid }, columnOf(parsed, name), JSON.stringify(name) + " of " + short(json));
    }
    const row = random(rows.length) + 1;
    for (const name of set.columnNames) assert.deepEqual(set.get(row, name), parsed[row - 1][name], short(json));
    const written = set.text();
    assert.deepEqual(JSON.parse(written), parsed.length === 0 ? {} : parsed.length === 1 ? parsed[0] : { rows: parsed }, short(json));
    for (const again of [RecordSet.parse(set.bytes()), RecordSet.fromRows(parsed), set.copy()]) {
      assert.equal(again.text(), written, short(json));
      again.free();
    }
    set.free();
  }
});

test("what JSON.parse refuses or takes of damaged texts never traps", () => {
  const taken = { set: 0, document: 0 };
  for (let i = 0; i < TABLES * 5; ++i) {
    const whole = escaped(JSON.stringify({ rows: table().slice(0, 5) }));
    const at = random(whole.length);
    const damaged = whole.slice(0, at) + oneOf(["", "\0", "}", "]", '"', "\\u12", ",", "1e5", "{", "nul"]) +
      whole.slice(at + random(3));
    const set = new RecordSet();
    const doc = new Document();
    const loaded = set.load(damaged);
    const read = doc.load(damaged);
    taken.set += loaded.ok;
    taken.document += read.ok;
    for (const result of [loaded, read]) {
      if (result.ok) continue;
      assert.ok(result.offset <= damaged.length && result.line >= 1 && result.column >= 1, damaged);
      const before = damaged.slice(0, result.offset);
      assert.equal(result.line, before.split("\n").length, damaged);
      assert.equal(result.column, before.length - before.lastIndexOf("\n"), damaged);
    }
    let strict;
    try {
      strict = JSON.parse(damaged);
    } catch {
      strict = undefined;
    }
    if (strict !== undefined) assert.ok(loaded.ok && read.ok, damaged);
    set.rows();
    set.free();
    doc.free();
  }
  assert.ok(taken.set > TABLES / 20 && taken.set < 5 * TABLES, JSON.stringify(taken));
});
