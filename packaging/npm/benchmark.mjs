// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Tables of ten columns from text to JavaScript and back, beside JSON.parse and JSON.stringify in the
// same run: `make wasm-bench`. Each time has everything in it: the
// text into the module's memory, the work, the results out of it, and the release.
//
// Processor time, the garbage collector's included, which other work on the machine disturbs least. Best of
// several, taking turns. "times as fast" is beside what JSON does for the same result.
import assert from "node:assert/strict";
import { openLibrary } from "qxrecordset";

const WORDS = ["alpha", "beta gamma", "Delta street 12", "Wien", "Größe", "x", "", "Graz", "Linz",
               "a longer text with some words in it"];
const { RecordSet } = await openLibrary();

let state = 1;
const random = (below) => (state = (Math.imul(state, 1103515245) + 12345) & 0x7fffffff) % below;
const word = () => WORDS[random(97) % WORDS.length];

function row(i) {
  return { id: i, amount: random(1e6), count: random(100), open: random(101) < 50, name: word() + i,
           city: word(), street: word(), note: i % 5 === 0 ? null : word(), kind: word(),
           code: "C" + String(i).padStart(6, "0") };
}

// What columns() makes, from rows that JSON.parse made. Someone who knows the columns writes such loops.
function columnsOf(rows) {
  const integers = { id: new Int32Array(rows.length), amount: new Int32Array(rows.length),
                     count: new Int32Array(rows.length) };
  const open = new Uint8Array(rows.length);
  const texts = { name: [], city: [], street: [], kind: [], code: [] };
  const note = [];
  const valid = new Uint8Array(rows.length);
  rows.forEach((row, i) => {
    integers.id[i] = row.id;
    integers.amount[i] = row.amount;
    integers.count[i] = row.count;
    open[i] = row.open ? 1 : 0;
    texts.name.push(row.name);
    texts.city.push(row.city);
    texts.street.push(row.street);
    texts.kind.push(row.kind);
    texts.code.push(row.code);
    note.push(row.note);
    valid[i] = row.note === null ? 0 : 1;
  });
  return { ...integers, open, ...texts, note, valid };
}

function use(set, work) {
  try {
    return work(set);
  } finally {
    set.free();
  }
}

function measure(count) {
  const rows = Array.from({ length: count }, (_, i) => row(i));
  const text = JSON.stringify({ rows });
  const bytes = new TextEncoder().encode(text);
  const kept = RecordSet.parse(text);
  const keptColumns = kept.columns();
  const decoder = new TextDecoder();
  const groups = {
    "text to columns": {
      "JSON.parse and a loop": () => columnsOf(JSON.parse(text).rows),
      "RecordSet.columns": () => use(RecordSet.parse(text), (set) => set.columns()),
    },
    "bytes to columns": {
      "JSON.parse and a loop": () => columnsOf(JSON.parse(decoder.decode(bytes)).rows),
      "RecordSet.columns": () => use(RecordSet.parse(bytes), (set) => set.columns()),
    },
    "text to rows": {
      "JSON.parse": () => JSON.parse(text).rows,
      "RecordSet.rows": () => use(RecordSet.parse(text), (set) => set.rows()),
    },
    "text, loaded only": {
      "JSON.parse": () => JSON.parse(text),
      "RecordSet.parse": () => use(RecordSet.parse(text), (set) => set.rowCount),
    },
    "text written": {
      "JSON.stringify": () => JSON.stringify({ rows }),
      "RecordSet.text": () => kept.text(),
    },
    "rows to text": {
      "JSON.stringify": () => JSON.stringify({ rows }),
      "RecordSet.fromRows": () => use(RecordSet.fromRows(rows), (set) => set.text()),
    },
    "columns to text": {
      "a loop and JSON.stringify": () => JSON.stringify({ rows: rows.map((one) => ({ ...one })) }),
      "RecordSet.fromColumns": () => use(RecordSet.fromColumns(keptColumns), (set) => set.text()),
    },
  };
  assert.deepEqual(use(RecordSet.parse(text), (set) => set.rows()), rows);
  const made = Object.fromEntries([...keptColumns].map(([name, column]) => [name, column.values]));
  assert.deepEqual({ ...made, valid: keptColumns.get("note").valid }, columnsOf(rows));
  console.log(`\n${count} rows, ${(bytes.length / 1e6).toFixed(3)} MB of text`);
  for (const [group, works] of Object.entries(groups)) report(group, times(works, count));
  kept.free();
}

// The best time of each work, in milliseconds for one.
function times(works, count) {
  const repeat = Math.max(1, Math.round(3000 / count)); // in one reading of the clock
  const turns = count < 50000 ? 60 : 9;
  const best = Object.fromEntries(Object.keys(works).map((name) => [name, Infinity]));
  for (let turn = 0; turn < turns; ++turn) {
    for (const [name, work] of Object.entries(works)) {
      globalThis.gc?.();
      const begin = process.cpuUsage();
      for (let i = 0; i < repeat; ++i) work();
      const { user, system } = process.cpuUsage(begin);
      best[name] = Math.min(best[name], (user + system) / 1000 / repeat);
    }
  }
  return best;
}

function report(group, best) {
  const [peer] = Object.values(best);
  for (const [name, time] of Object.entries(best)) {
    const label = `${group}: ${name}`.padEnd(44);
    console.log(`${label}${time.toFixed(4).padStart(10)} ms ${(peer / time).toFixed(2).padStart(6)} times as fast`);
  }
}

const counts = process.argv.slice(2).map(Number);
for (const count of counts.length ? counts : [10, 1000, 100000]) measure(count);
