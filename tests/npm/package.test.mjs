// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The package as a program sees it: record sets, columns, documents, strings, memory. Run in a folder
// where it is installed from its tarball (run.sh).
import assert from "node:assert/strict";
import { readFileSync, readdirSync } from "node:fs";
import { test } from "node:test";
import { gzipSync } from "node:zlib";
import { MemoryError, ParseError, openLibrary } from "qxrecordset";

const { RecordSet, Document } = await openLibrary();
const FOLDER = new URL("node_modules/qxrecordset/", import.meta.url);

test("the package is small, complete and has no dependencies", () => {
  const files = readdirSync(FOLDER).sort();
  assert.deepEqual(files, ["LICENSE", "README.md", "index.d.ts", "library.js", "node.js", "package.json",
                           "qxrecordset.wasm", "web.js"]);
  const shipped = files.filter((name) => /\.(js|wasm)$/.test(name)).map((name) => readFileSync(new URL(name, FOLDER)));
  const size = shipped.reduce((sum, bytes) => sum + gzipSync(bytes, { level: 9 }).length, 0);
  assert.ok(size <= 60000, `${size} bytes`);
  const { version, dependencies } = JSON.parse(readFileSync(new URL("package.json", FOLDER)));
  assert.equal(dependencies, undefined);
  assert.equal(version, process.env.VERSION);
});

test("the module asks for nothing but memory, growth and real numbers", () => {
  const module = new WebAssembly.Module(readFileSync(new URL("qxrecordset.wasm", FOLDER)));
  const imports = WebAssembly.Module.imports(module).map(({ name }) => name).sort();
  assert.deepEqual(imports, ["emscripten_notify_memory_growth", "memory", "proc_exit", "readReal"]);
});

test("a text becomes rows, columns and the same text", () => {
  const text = '{"rows":[{"a":1,"b":"x","c":true,"d":null},{"a":-2147483648,"c":false,"e":{"k":"v"}}]}';
  using(RecordSet.parse(text), (set) => {
    assert.equal(set.text(), text);
    assert.equal(Buffer.from(set.bytes()).toString(), text);
    assert.equal(JSON.stringify(set), text);
    assert.equal(set.rowCount, 2);
    assert.deepEqual(set.columnNames, ["a", "b", "c", "d", "e"]);
    assert.deepEqual(set.rows(), JSON.parse(text).rows);
    assert.deepEqual([...set.columns().values()], [
      { name: "a", type: "integer", length: 2, values: Int32Array.of(1, -2147483648), valid: null },
      { name: "b", type: "text", length: 2, values: ["x", null], valid: Uint8Array.of(1, 0) },
      { name: "c", type: "boolean", length: 2, values: Uint8Array.of(1, 0), valid: null },
      { name: "d", type: "null", length: 2, values: [null, null], valid: Uint8Array.of(0, 0) },
      { name: "e", type: "recordset", length: 2, values: [null, '{"k":"v"}'], valid: Uint8Array.of(0, 1) },
    ]);
    assert.deepEqual([set.get(1, "d"), set.get(2, "d"), set.get(2, 5)], [null, undefined, { k: "v" }]);
    assert.deepEqual([set.type(2, "e"), set.type(2, "b"), set.cellText(2, "c")], ["recordset", undefined, "0"]);
    assert.equal(set.column("none"), undefined);
    assert.equal(set.get(1, "none"), undefined);
  });
});

// Text: reason, offset, line, column.
const REFUSED = [
  ['{"a":1', "the text ends within an object", 6, 1, 7],
  ['{"a":x}', "expected a value", 5, 1, 6],
  ['{"rows":[\n  {"a":1},\n  {"a":}]}', "expected a value", 28, 3, 8],
  ['{"ä😀":"é",\n"ö😀": ?}', "expected a value", 19, 2, 8],
];

test("a refused text tells where, in units of the string or in bytes", () => {
  for (const [text, reason, offset, line, column] of REFUSED) {
    const set = new RecordSet();
    const result = set.load(text);
    assert.deepEqual([result.ok, result.offset, result.line, result.column], [false, offset, line, column], text);
    assert.equal(result.reason.length > 0, true);
    if (reason === "expected a value") assert.equal(result.reason, reason, text);
    const bytes = new TextEncoder().encode(text);
    assert.equal(set.load(bytes).offset, Buffer.byteLength(text.slice(0, offset)), text);
    assert.equal(set.text(), "{}"); // nothing of it is there
    assert.throws(() => RecordSet.parse(text), (error) => error instanceof ParseError &&
      error instanceof SyntaxError && error.line === line && error.offset === offset);
    set.free();
  }
});

test("losses are counted", () => {
  const text = '{"rows":[{},{"r":1.5,"l":[1],"t":"a\\u0000b","n":2147483648,"m":-99999999999}]}';
  using(new RecordSet(), (set) => {
    const { ok, losses } = set.load(text);
    assert.equal(ok, true);
    assert.deepEqual(losses, { cells: 5, firstRow: 2, firstColumn: "r", reals: 1, arrays: 1, cut: 1, limited: 2 });
    assert.deepEqual(set.rows()[1], { r: "", l: "", t: "a", n: 2147483647, m: -2147483648 });
    set.load('{"a":1}');
    assert.equal(set.losses.cells, 0);
  });
});

test("cells take what they can hold", () => {
  using(new RecordSet(), (set) => {
    const values = [7, -7, 0, 2147483647, true, false, null, "", "x", "{", { k: 1, n: null }];
    values.forEach((value, i) => set.set(i + 1, "v", value));
    values.forEach((value, i) => assert.deepEqual(set.get(i + 1, "v"), value));
    set.set(1, 1, 2 ** 40);
    assert.deepEqual([set.get(1, 1), set.type(1, 1)], ["1099511627776", "text"]);
    set.set(1, 1, 9223372036854775807n);
    assert.equal(set.get(1, 1), "9223372036854775807");
    const before = set.text();
    for (const [value, kind] of [[1.5, TypeError], [NaN, TypeError], [[1], TypeError], [undefined, TypeError],
                                 [2n ** 63n, RangeError], ["a\0b", RangeError], [() => 1, TypeError]]) {
      assert.throws(() => set.set(1, "v", value), kind, String(value));
    }
    assert.throws(() => set.set(1, 2, "x"), RangeError);
    assert.throws(() => set.set(2 ** 31, "v", "x"), RangeError);
    assert.throws(() => set.get(1, "a\0b"), RangeError);
    assert.equal(set.text(), before);
  });
});

test("nested record sets are followed and stored", () => {
  using(RecordSet.parse('{"name":"A4","size":{"h":297,"w":210}}'), (set) => {
    using(set.nested(1, "size"), (size) => {
      assert.equal(size.get(1, "h"), 297);
      size.set(2, "h", 1);
      set.set(1, "size", size);
    });
    assert.deepEqual(set.get(1, "size"), { rows: [{ h: 297, w: 210 }, { h: 1 }] });
    using(set.nested(1, "size"), (size) => assert.equal(size.rowCount, 2));
    assert.equal(set.nested(1, "name"), undefined);
    assert.equal(set.nested(5, "size"), undefined);
  });
});

test("rows and columns make the same record set", () => {
  const rows = [{ i: 1, b: true, t: "x", n: null, o: { k: 1 }, big: 2 ** 33 }, { t: "y", o: null },
                { i: -3, b: false, t: "", big: "z" }];
  const text = '{"rows":[{"b":true,"big":"8589934592","i":1,"n":null,"o":{"k":1},"t":"x"},' +
    '{"o":null,"t":"y"},{"b":false,"big":"z","i":-3,"t":""}]}';
  using(RecordSet.fromRows(rows), (set) => {
    assert.equal(set.text(), text);
    using(RecordSet.fromColumns(set.columns()), (made) => {
      const withNulls = JSON.parse(text).rows.map((row) => ({ i: null, b: null, n: null, o: null, big: null, ...row }));
      assert.deepEqual(made.rows(), withNulls);
    });
    using(set.copy(), (copy) => {
      copy.merge(RecordSet.fromRows([{ i: 5 }]));
      assert.deepEqual([copy.get(1, "i"), set.get(1, "i")], [5, 1]);
    });
  });
  using(RecordSet.fromColumns({ a: Int32Array.of(1, 2), b: ["x", null], c: [undefined, true], d: [5n, 6],
                                e: Uint8Array.of(3, 4), f: Float64Array.of(7, 8) }), (set) => {
    assert.equal(set.text(), '{"rows":[{"a":1,"b":"x","d":5,"e":3,"f":7},{"a":2,"b":null,"c":true,"d":6,"e":4,"f":8}]}');
  });
  for (const bad of [[{ a: 1.5 }], [{ a: [1] }], [{ a: NaN }], [{ a: { b: 1.5 } }], [{ a: () => 1 }]]) {
    assert.throws(() => RecordSet.fromRows(bad), TypeError, JSON.stringify(bad));
  }
  assert.throws(() => RecordSet.fromRows([{ a: "x\0y" }]), RangeError);
  assert.throws(() => RecordSet.fromColumns({ a: ["x", "y\0z"] }), RangeError);
  assert.throws(() => RecordSet.fromColumns({ a: [1.5] }), TypeError);
});

// Long enough for every way in which texts are copied and decoded.
const STRINGS = ["", "a", "é", "😀", "\ud83d", "\ude00", "\ude00\ud83d", "a\ud800b", "\ufffd", "\ufeffx", "\u{10ffff}",
                 "\u07ff\u0800\uffff", "x".repeat(23) + "ß", "x".repeat(500) + "\udfff", "漢".repeat(300)];

test("strings arrive unit by unit", () => {
  for (const string of STRINGS) {
    using(new RecordSet(), (set) => {
      set.set(1, string + "n", string);
      set.load('{"e":"' + [...Array(string.length).keys()].map((i) =>
        "\\u" + string.charCodeAt(i).toString(16).padStart(4, "0")).join("") + '"}');
      assert.equal(set.get(1, string + "n"), string);
      assert.equal(set.get(1, "e"), string);
      assert.deepEqual(set.columnNames, [string + "n", "e"]);
      assert.deepEqual(JSON.parse(set.text()), { [string + "n"]: string, e: string });
      using(RecordSet.parse(set.text()), (again) => assert.equal(again.get(1, "e"), string));
    });
    using(RecordSet.fromColumns({ s: [string, null, string + "!"] }), (set) => {
      assert.deepEqual(set.column("s").values, [string, null, string + "!"]);
      assert.deepEqual(set.rows(), [{ s: string }, { s: null }, { s: string + "!" }]);
    });
    assert.equal(using(Document.parse(JSON.stringify([string])), (doc) => doc.get("0")), string);
  }
});

test("names that objects know are columns like others", () => {
  const text = '{"__proto__":"p","constructor":"c","toString":1}';
  using(RecordSet.parse(text), (set) => {
    assert.equal(JSON.stringify(set.rows()[0]), text);
    assert.equal(Object.getPrototypeOf(set.rows()[0]), Object.prototype);
  });
});

test("documents are read by path", () => {
  const text = '{"rows":[{"a":1.5,"b":[true,null,"x"]},{"n":12345678901234567890,"m":-7,"e":1e400,"s":5e-324}],"":1}';
  using(Document.parse(text), (doc) => {
    for (const [path, type, value, size] of [
      ["rows", "array", undefined, 2], ["rows.0", "object", undefined, 2], ["rows.0.a", "real", 1.5, 0],
      ["rows.0.b.0", "boolean", true, 0], ["rows.0.b.1", "null", null, 0], ["rows.0.b.2", "string", "x", 0],
      ["rows.1.n", "integer", 12345678901234567890, 0], ["rows.1.e", "real", Infinity, 0],
      ["rows.1.s", "real", 5e-324, 0], ["rows.2", "missing", undefined, 0], ["x.y", "missing", undefined, 0]]) {
      assert.deepEqual([doc.type(path), doc.get(path), doc.size(path), doc.has(path)],
                       [type, value, size, type !== "missing"], path);
    }
    assert.equal(doc.bigint("rows.1.m"), -7n);
    assert.equal(doc.bigint("rows.1.n"), 9223372036854775807n);
    assert.equal(doc.bigint("rows"), undefined);
    assert.deepEqual(doc.load("[1,\n 2,]x"), { ok: true });
    assert.deepEqual(doc.load("[1,\n é 2]").line, 2);
    assert.throws(() => Document.parse("nothing"), ParseError);
  });
});

test("what was freed is not used", () => {
  const set = RecordSet.parse('{"a":1}');
  const doc = Document.parse("[1]");
  set.free();
  set.free();
  doc[Symbol.dispose]();
  for (const use of [() => set.text(), () => set.rows(), () => set.get(1, "a"), () => set.rowCount,
                     () => set.set(1, "a", 1), () => set.load("{}"), () => new RecordSet().merge(set),
                     () => set.column("a"), () => set.nested(1, "a"), () => set.clear(), () => doc.get("0")]) {
    assert.throws(use, { message: "used after free()" });
  }
  assert.throws(() => new RecordSet().merge(doc), Error);
  assert.throws(() => new RecordSet().merge({}), TypeError);
});

test("libraries have their own memory", async () => {
  const other = await openLibrary({ maximumMemory: 2 ** 24 });
  assert.equal(await openLibrary(), await openLibrary());
  assert.throws(() => new RecordSet().merge(new other.RecordSet()), TypeError);
});

test("memory that is exhausted is an error, and everything stays usable", async () => {
  const library = await openLibrary({ maximumMemory: 2 ** 23 });
  const large = JSON.stringify({ rows: Array.from({ length: 60000 }, (_, i) => ({ id: i, name: `name ${i}` })) });
  const kept = library.RecordSet.parse('{"rows":[{"a":1},{"a":2}]}');
  const rest = library.RecordSet.fromColumns({ s: Array.from({ length: 8000 }, (_, i) => `text of row ${i}`) });
  const growing = new library.RecordSet();
  const works = {
    parse: () => library.RecordSet.parse(large),
    load: () => kept.load(large),
    fromRows: () => library.RecordSet.fromRows(JSON.parse(large).rows),
    fromColumns: () => library.RecordSet.fromColumns({ s: Array(300000).fill("x".repeat(20)) }),
    integers: () => library.RecordSet.fromColumns({ i: new Int32Array(2 ** 21) }),
    document: () => library.Document.parse(large),
    cell: () => kept.set(1, "b", "y".repeat(2 ** 23)),
    lone: () => kept.set(1, "b", "\ud800".repeat(2 ** 21)),
    copies: () => { for (const copies = [];;) copies.push(rest.copy()); },
    cells: () => { for (let i = 1;; ++i) growing.set(i, "c", "z".repeat(1000)); },
    text: () => growing.text(),
    sparse: () => { kept.set(858993500, "a", 1); kept.column("a"); }, // 5 bytes each: 204 beyond 32 bits
  };
  for (let turn = 0; turn < 3; ++turn) {
    for (const [name, work] of Object.entries(works)) {
      assert.throws(work, MemoryError, name);
      assert.equal(kept.get(2, "a"), 2, name);
      assert.ok(library.memorySize() <= 2 ** 23, name);
      if (name === "copies") await collected();
    }
    growing.clear();
    kept.clear();
    kept.load('{"rows":[{"a":1},{"a":2}]}');
  }
  growing.free();
  using(library.RecordSet.parse('{"fine":"yes"}'), (set) => assert.equal(set.get(1, "fine"), "yes"));
});

test("memory that ends while a string is copied is an error", async () => {
  const library = await openLibrary({ maximumMemory: 2 ** 22 });
  const set = new library.RecordSet();
  for (const string of ["\ud800", "é"]) { // the first step has room for them, the second has not
    assert.throws(() => set.set(1, "a", string.repeat(2 ** 20)), MemoryError);
    set.set(1, "a", string.repeat(1000));
    assert.equal(set.get(1, "a"), string.repeat(1000));
  }
});

// Lets the garbage collector release what was not freed.
async function collected() {
  for (let i = 0; i < 5; ++i) {
    globalThis.gc();
    await new Promise((resolve) => setTimeout(resolve, 5));
  }
}

test("what is forgotten is released", async () => {
  const library = await openLibrary({ maximumMemory: 2 ** 24 });
  const text = JSON.stringify({ t: "x".repeat(2 ** 20) });
  for (let i = 0; i < 100; ++i) {
    library.RecordSet.parse(text);
    if (i % 3 === 0) await collected();
  }
  assert.ok(library.memorySize() <= 2 ** 24);
});

test("texts of any depth are read or refused", () => {
  for (const [open, close] of [["[", "]"], ['{"a":', "}"]]) {
    const nested = (depth) => open.repeat(depth) + "1" + close.repeat(depth);
    assert.equal(new Document().load(nested(1024)).ok, true);
    assert.equal(new Document().load(nested(1025)).ok, false);
    assert.equal(new Document().load(nested(1e6)).ok, false);
    assert.equal(new RecordSet().load(`{"a":${nested(1023)}}`).ok, true);
    assert.equal(new RecordSet().load(`{"a":${nested(1e6)}}`).ok, false);
  }
  using(RecordSet.parse('{"a":'.repeat(1000) + "1" + "}".repeat(1000)), (set) => {
    assert.equal(set.text().length, 6001);
    assert.equal(JSON.stringify(set.rows()[0]), set.text());
  });
});

function using(object, use) {
  try {
    return use(object);
  } finally {
    object.free();
  }
}
