// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The classes on the functions of recordset/RS.h and native/Module.cpp. index.d.ts says what they do.

// Kinds of cells (recordset/RS.h), and the types of documents from -1 on (json/JSON.h).
const NONE = -1, NULL = 0, LONG = 1, BOOL = 2, TEXT = 3, RECORDSET = 5;
const KINDS = ["null", "integer", "boolean", "text", "text", "recordset"];
const TYPES = ["missing", "missing", "null", "boolean", "integer", "real", "string", "array", "object"];

const PAGE = 65536;
const INITIAL_PAGES = 32; // INITIAL_MEMORY of CMakeLists.txt
const NO_MEMORY = -2;
const ENTRY = 8; // words of a Dictionary::Entry
const FOUND = 5; // and of a Found
const COLUMNS = 8; // kColumns
const SHORT = 24; // bytes of text that are faster read one by one

export class ParseError extends SyntaxError {
  name = "ParseError";
  constructor({ reason, offset, line, column }) {
    super(`line ${line}, column ${column}: ${reason}`);
    Object.assign(this, { reason, offset, line, column });
  }
}

export class MemoryError extends RangeError {
  name = "MemoryError";
  constructor() {
    super("memory is exhausted");
  }
}

// ---- Text ---------------------------------------------------------------------------------------

const encoder = new TextEncoder();
const decoder = new TextDecoder("utf-8", { ignoreBOM: true });

const isWellFormed = (text) => text.isWellFormed?.() ?? !/\p{Surrogate}/u.test(text);

// UTF-8 in which a surrogate without its other half has three bytes of its own, like any character.
function encodeUnits(text, bytes) {
  let at = 0;
  for (let i = 0; i < text.length; ++i) {
    const code = text.codePointAt(i);
    if (code < 0x80) {
      bytes[at++] = code;
    } else {
      if (code < 0x800) {
        bytes[at++] = 0xc0 | (code >> 6);
      } else {
        if (code < 0x10000) {
          bytes[at++] = 0xe0 | (code >> 12);
        } else {
          bytes[at++] = 0xf0 | (code >> 18);
          bytes[at++] = 0x80 | ((code >> 12) & 63);
          ++i;
        }
        bytes[at++] = 0x80 | ((code >> 6) & 63);
      }
      bytes[at++] = 0x80 | (code & 63);
    }
  }
  return at;
}

// The reverse. A byte that belongs to no character becomes U+FFFD.
function decodeUnits(bytes) {
  const units = new Uint16Array(bytes.length);
  let length = 0;
  for (let i = 0; i < bytes.length;) {
    const first = bytes[i++];
    const more = first < 0xc2 ? 0 : first < 0xe0 ? 1 : first < 0xf0 ? 2 : first < 0xf5 ? 3 : 0;
    let code = more ? first & (0x3f >> more) : first < 0x80 ? first : 0xfffd;
    let j = 0;
    while (j < more && (bytes[i + j] & 0xc0) === 0x80) code = (code << 6) | (bytes[i + j++] & 63);
    if (j < more || (more === 2 && code < 0x800) || (more === 3 && (code < 0x10000 || code > 0x10ffff))) {
      code = 0xfffd;
    } else {
      i += more;
    }
    if (code < 0x10000) {
      units[length++] = code;
    } else {
      units[length++] = 0xd7c0 + (code >> 10);
      units[length++] = 0xdc00 | (code & 0x3ff);
    }
  }
  let text = "";
  for (let i = 0; i < length; i += 8192) {
    text += String.fromCharCode.apply(null, units.subarray(i, Math.min(i + 8192, length)));
  }
  return text;
}

// Text of the library's: UTF-8, or with halves of surrogate pairs as above, which `decoder` does not
// know and marks.
function decode(bytes) {
  const text = decoder.decode(bytes);
  return text.includes("\ufffd") ? decodeUnits(bytes) : text;
}

// ---- The module and its memory ------------------------------------------------------------------

class Memory {
  constructor(maximum) {
    const pages = Math.min(32768, Math.max(INITIAL_PAGES, Math.floor(maximum / PAGE)));
    this.object = new WebAssembly.Memory({ initial: INITIAL_PAGES, maximum: pages });
    this.renew();
  }

  // Growing makes new buffers of the memory.
  renew() {
    const { buffer } = this.object;
    this.bytes = new Uint8Array(buffer);
    this.words = new Int32Array(buffer);
  }

  get imports() {
    return {
      env: {
        memory: this.object,
        emscripten_notify_memory_growth: () => this.renew(),
        readReal: (text, length) => parseFloat(this.text(text, length)),
      },
      wasi_snapshot_preview1: { proc_exit: () => {} },
    };
  }

  use(exports) {
    this.exports = exports;
    exports._initialize();
    exports.QX_Seed(...crypto.getRandomValues(new Int32Array(2)));
    this.results = this.allocate(4 * FOUND * COLUMNS); // where functions write what they give besides their result
  }

  allocate(size) {
    return (size < 2 ** 31 && this.exports.malloc(size)) || fail(new MemoryError());
  }

  text(at, length) {
    const { bytes } = this;
    if (length <= SHORT) {
      let text = "";
      for (let i = at; i < at + length; ++i) {
        if (bytes[i] > 0x7f) return decode(bytes.subarray(at, at + length));
        text += String.fromCharCode(bytes[i]);
      }
      return text;
    }
    return decode(bytes.subarray(at, at + length));
  }

  // A copy of the types of cells.
  kinds(at, count) {
    return new Int8Array(this.object.buffer.slice(at, at + count));
  }

  textToNul(at) {
    return this.text(at, this.bytes.indexOf(0, at) - at);
  }

  // Calls use(address, length) with a copy of the text, which has a NUL behind it.
  withText(text, use) {
    const [at, length] = typeof text === "string" ? this.put(text) : this.putBytes(text);
    try {
      return use(at, length);
    } finally {
      this.exports.free(at);
    }
  }

  // The same for a name or a cell, which a NUL would end.
  withWord(text, use) {
    if (text.includes("\0")) throw new RangeError("a NUL would end the text there");
    return this.withText(text, use);
  }

  // What parse(address, length) gives for the text: undefined, or a fault with its position in bytes, which
  // becomes one in the text.
  read(text, parse) {
    const positioned = (fault, at, length) => fault && (typeof text === "string"
      ? inUnits(this.bytes.subarray(at, at + length), fault) : fault);
    return this.withText(text, (at, length) => {
      const joined = this.exports.QX_JoinPairs(at, length);
      const fault = parse(at, joined);
      if (!fault || joined === length) return positioned(fault, at, length);
      return this.withText(text, (as, given) => positioned(parse(as, given), as, given));
    });
  }

  putBytes(bytes) {
    const at = this.allocate(bytes.length + 1);
    this.bytes.set(bytes, at);
    this.bytes[at + bytes.length] = 0;
    return [at, bytes.length];
  }

  // Most texts have hardly more bytes than units: others take a second step.
  put(text) {
    let room = text.length + (text.length >> 4);
    let at = this.allocate(room + 1);
    let length = 0;
    if (isWellFormed(text)) {
      const { read, written } = encoder.encodeInto(text, this.bytes.subarray(at, at + room));
      length = written;
      if (read < text.length) {
        room = written + 3 * (text.length - read);
        at = this.grow(at, written, room + 1);
        const rest = this.bytes.subarray(at + written, at + room);
        length += encoder.encodeInto(text.slice(read), rest).written;
      }
    } else {
      at = this.grow(at, 0, 3 * text.length + 1);
      length = encodeUnits(text, this.bytes.subarray(at));
    }
    this.bytes[at + length] = 0;
    return [at, length];
  }

  grow(from, length, size) {
    const to = this.exports.malloc(size);
    if (to) this.bytes.copyWithin(to, from, from + length);
    this.exports.free(from);
    return to || fail(new MemoryError());
  }
}

function fail(error) {
  throw error;
}

// Where an offset in UTF-8 is, in units of the string: `line` begins at byte `begin`.
function inUnits(bytes, fault) {
  const begin = fault.offset - (fault.column - 1);
  const column = decode(bytes.subarray(begin, fault.offset)).length + 1;
  return { ...fault, offset: decode(bytes.subarray(0, begin)).length + column - 1, column };
}

// ---- The classes --------------------------------------------------------------------------------

const DISPOSE = Symbol.dispose ?? Symbol("Symbol.dispose");

function classes(memory) {
  const lib = memory.exports;
  const freed = new FinalizationRegistry(({ free, handle }) => free(handle));

  // What owns something in the memory.
  class Owner {
    #handle;
    #free;
    constructor(handle, free) {
      this.#handle = handle || fail(new MemoryError());
      this.#free = free;
      freed.register(this, { free, handle }, this);
    }

    // Its address. (Classes outside of this file cannot ask for it.)
    static of(owner) {
      if (!(#handle in owner)) throw new TypeError("not an object of this library");
      return owner.#handle || fail(new Error("used after free()"));
    }

    free() {
      if (this.#handle === 0) return;
      freed.unregister(this);
      this.#free(this.#handle);
      this.#handle = 0;
    }

    [DISPOSE]() {
      this.free();
    }
  }

  const of = Owner.of;

  // ---- Record sets

  const NO_LOSSES = Object.freeze({ cells: 0, firstRow: 0, firstColumn: undefined, reals: 0, arrays: 0, cut: 0,
                                    limited: 0 });

  class RecordSet extends Owner {
    #indices = new Map(); // of columns by name
    #losses = NO_LOSSES;

    constructor(handle = lib.RS_Alloc()) {
      super(handle, lib.RS_Free);
    }

    static parse(text) {
      const set = new RecordSet();
      const result = set.load(text);
      if (result.ok) return set;
      set.free();
      throw new ParseError(result);
    }

    static fromRows(rows) {
      const listed = Array.isArray(rows) ? rows : [...rows];
      const { plain, nested } = plainRows(listed);
      const set = RecordSet.parse(JSON.stringify({ rows: plain }));
      try {
        refuseLosses(set.losses);
        for (const [row, name, value] of nested) set.set(row, name, value);
      } catch (error) {
        set.free();
        throw error;
      }
      return set;
    }

    static fromColumns(columns) {
      const set = new RecordSet();
      try {
        const pairs = Symbol.iterator in columns ? columns : Object.entries(columns);
        for (const [name, values] of pairs) set.#writeColumn(name, values);
      } catch (error) {
        set.free();
        throw error;
      }
      return set;
    }

    load(text) {
      const handle = of(this);
      const { results } = memory;
      const told = () => memory.words.subarray(results / 4, results / 4 + 12);
      const fault = memory.read(text, (at, length) => {
        memory.words[results / 4] = 48; // bytes of struct RS_LoadResult
        if (lib.RS_Load(handle, at, length, results)) return undefined;
        const [, offset, line, column, reason] = told();
        return { ok: false, reason: memory.textToNul(reason || fail(new MemoryError())), offset, line, column };
      });
      if (fault) return fault;
      const [, , , , , cells, firstRow, first, reals, arrays, cut, limited] = told();
      this.#losses = cells === 0 ? NO_LOSSES : Object.freeze(
        { cells, firstRow, firstColumn: this.#name(first), reals, arrays, cut, limited });
      return { ok: true, losses: this.#losses };
    }

    get losses() {
      return this.#losses;
    }

    #textPlace() {
      const at = lib.RS_Text(of(this), memory.results) || fail(new MemoryError());
      return [at, memory.words[memory.results / 4]];
    }

    text() {
      return memory.text(...this.#textPlace());
    }

    bytes() {
      const [at, length] = this.#textPlace();
      return memory.bytes.slice(at, at + length);
    }

    toJSON() {
      const text = this.text();
      return text === "" ? {} : JSON.parse(text);
    }

    copy() {
      const made = new RecordSet();
      try {
        made.merge(this);
      } catch (error) {
        made.free();
        throw error;
      }
      return made;
    }

    merge(other) {
      this.#checked(lib.RS_Merge(of(this), of(other)));
    }

    clear() {
      lib.RS_Clear(of(this));
      this.#indices.clear();
    }

    // ---- Rows and columns

    get rowCount() {
      return lib.RS_RowsCount(of(this));
    }

    get columnNames() {
      const count = lib.RS_ColumnsCount(of(this));
      return Array.from({ length: count }, (_, i) => this.#name(i + 1));
    }

    #name(index) {
      return memory.textToNul(this.#checked(lib.RS_ColumnName(of(this), index)));
    }

    // The index of a column, or -1. A column may be given as its index.
    #index(column) {
      const handle = of(this);
      if (typeof column === "number") return column;
      let index = this.#indices.get(column);
      if (index === undefined) {
        index = memory.withWord(column, (at) => lib.RS_ColumnIndex(handle, at));
        if (index > 0) this.#indices.set(column, index);
      }
      return index;
    }

    addColumn(name) {
      return this.#checked(memory.withWord(name, (at) => Math.max(0, lib.RS_AddColumn(of(this), at))));
    }

    // What a function gave that gives 0 when memory is exhausted, and only then.
    #checked(result) {
      return result || fail(new MemoryError());
    }

    // ---- Cells

    type(row, column) {
      const kind = lib.RS_GetIndexType(of(this), this.#index(column), row);
      return kind === NONE ? undefined : KINDS[kind] ?? "text";
    }

    cellText(row, column) {
      const at = lib.RS_GetIndexAsString(of(this), this.#index(column), row, memory.results);
      return at ? memory.text(at, memory.words[memory.results / 4]) : undefined;
    }

    get(row, column) {
      const index = this.#index(column);
      const kind = lib.RS_GetIndexType(of(this), index, row);
      return kind === NONE ? undefined : valueOf(kind, this.cellText(row, index));
    }

    nested(row, column) {
      const handle = of(this);
      const index = this.#index(column);
      if (lib.RS_GetIndexType(handle, index, row) === NONE) return undefined;
      const made = lib.RS_GetIndexAsRecordSet(handle, index, row);
      if (made) return new RecordSet(made);
      if (memory.textToNul(lib.RS_Error(handle)) === "memory is exhausted") throw new MemoryError();
      return undefined;
    }

    set(row, column, value) {
      const handle = of(this);
      if (!Number.isInteger(row) || row !== (row | 0)) throw new RangeError("a row is a 32-bit integer");
      const write = writerOf(value); // refuses before a column is added
      if (typeof column === "number" && (column < 1 || column > lib.RS_ColumnsCount(handle))) {
        throw new RangeError("there is no such column");
      }
      this.#checked(write(handle, typeof column === "number" ? column : this.addColumn(column), row));
    }

    // ---- Whole columns

    // Calls use(cells, i) for columns from index `first` on: what their cells are in all rows, each and
    // together, how many rows have none or a null, and the values, which are anything there.
    #read(first, columns, use) {
      const count = this.rowCount;
      for (let from = 0; from < columns; from += COLUMNS) {
        const group = Math.min(COLUMNS, columns - from);
        const size = Math.ceil((5 * count) / 4) * 4;
        const at = memory.allocate(group * size + 8);
        try {
          lib.QX_ReadColumns(of(this), first + from, group, count, at, memory.results);
          const found = memory.words.slice(memory.results / 4, memory.results / 4 + FOUND * group);
          for (let i = 0; i < group; ++i) {
            use(this.#cells(first + from + i, count, at + i * size, found.subarray(FOUND * i)), from + i);
          }
        } finally {
          lib.free(at);
        }
      }
    }

    #cells(index, count, at, [whole, kind, empty, different, texts]) {
      const types = at + 4 * count;
      if (!whole) return this.#texts(index, count, types);
      const numbers = memory.words.subarray(at / 4, at / 4 + count);
      const values = kind === LONG ? numbers.slice()
        : kind === BOOL ? new Uint8Array(numbers)
        : this.#fromDictionary(texts, different, numbers);
      return { kinds: memory.kinds(types, count), kind, empty, values };
    }

    #fromDictionary(entries, different, numbers) {
      const strings = Array.from({ length: different }, (_, i) => {
        const [at, length] = memory.words.subarray(entries / 4 + ENTRY * i);
        return memory.text(at, length);
      });
      const values = new Array(numbers.length);
      for (let i = 0; i < numbers.length; ++i) values[i] = strings[numbers[i]];
      return values;
    }

    #texts(index, count, types) {
      const at = this.#checked(lib.RS_GetColumnAsStrings(of(this), index, 1, count, types, memory.results));
      const kinds = memory.kinds(types, count);
      const values = memory.text(at, memory.words[memory.results / 4] - 1).split("\0");
      return { kinds, ...summary(kinds), values };
    }

    column(column) {
      const index = this.#index(column);
      if (index < 1 || index > lib.RS_ColumnsCount(of(this))) return undefined;
      let made;
      this.#read(index, 1, (cells) => { made = columnOf(this.#name(index), cells); });
      return made;
    }

    columns() {
      const names = this.columnNames;
      const made = new Map();
      this.#read(1, names.length, (cells, i) => made.set(names[i], columnOf(names[i], cells)));
      return made;
    }

    rows() {
      const names = this.columnNames;
      const rows = Array.from({ length: this.rowCount }, () => ({}));
      this.#read(1, names.length, (cells, i) => addTo(rows, names[i], cells));
      return rows;
    }

    #writeColumn(name, given) {
      const values = ArrayBuffer.isView(given) || Array.isArray(given) ? given : given.values ?? [...given];
      const valid = values === given ? null : given.valid ?? null;
      const index = this.addColumn(name);
      const type = values === given ? undefined : given.type;
      const isSmall = values instanceof Int32Array || values instanceof Int16Array || values instanceof Int8Array ||
        values instanceof Uint16Array || values instanceof Uint8Array;
      if (isSmall) {
        this.#writeIntegers(index, values, valid, type === "boolean");
      } else if (type !== "recordset" && values.length > 0 && isTexts(values)) {
        this.#writeTexts(index, values, valid);
      } else {
        for (let i = 0; i < values.length; ++i) {
          const value = valid && !valid[i] ? null : values[i];
          if (value === undefined) continue;
          this.set(i + 1, index, type === "recordset" && typeof value === "string" ? JSON.parse(value) : value);
        }
      }
    }

    #writeIntegers(index, values, valid, isBoolean) {
      const count = values.length;
      const at = memory.allocate(5 * count + 4);
      try {
        memory.words.set(values, at / 4);
        if (valid) memory.bytes.set(valid, at + 4 * count);
        this.#checked(lib.QX_SetIntegers(of(this), index, at, valid && at + 4 * count, count, isBoolean));
      } finally {
        lib.free(at);
      }
    }

    #writeTexts(index, values, valid) {
      const given = valid ?? (values.includes(null) ? Uint8Array.from(values, (one) => (one === null ? 0 : 1)) : null);
      memory.withText(values.join("\0") + "\0", (at, length) => {
        const marks = memory.allocate(values.length);
        try {
          if (given) memory.bytes.set(given, marks);
          const done = lib.QX_SetTexts(of(this), index, at, length, given && marks, values.length);
          if (done < 0) throw new RangeError("a NUL would end the text there");
          this.#checked(done);
        } finally {
          lib.free(marks);
        }
      });
    }
  }

  // A function that writes the value to a cell, given handle, index and row.
  function writerOf(value) {
    switch (typeof value) {
      case "boolean":
        return (handle, index, row) => lib.RS_SetIndexAsBool(handle, index, row, value);
      case "number":
        if (!Number.isSafeInteger(value)) refuse(value);
        return (handle, index, row) => lib.RS_SetIndexAsLong64(handle, index, row, BigInt(value));
      case "bigint":
        if (BigInt.asIntN(64, value) !== value) throw new RangeError("the integer is out of range");
        return (handle, index, row) => lib.RS_SetIndexAsLong64(handle, index, row, value);
      case "string":
        return (handle, index, row) =>
          memory.withWord(value, (at) => lib.RS_SetIndexAsString(handle, index, row, at));
      case "object":
        break;
      default:
        refuse(value);
    }
    if (value === null) return lib.RS_SetIndexNull;
    if (value instanceof RecordSet) {
      return (handle, index, row) => lib.RS_SetIndexAsRecordSet(handle, index, row, of(value));
    }
    if (Array.isArray(value)) refuse(value);
    return (handle, index, row) => {
      const made = RecordSet.fromRows(Array.isArray(value.rows) ? value.rows : [value]);
      try {
        return lib.RS_SetIndexAsRecordSet(handle, index, row, of(made));
      } finally {
        made.free();
      }
    };
  }

  function plainRows(rows) {
    const nested = [];
    const plain = rows.map((row, i) => {
      let changed = row;
      for (const name in row) {
        const value = row[name];
        const kind = typeof value;
        if (kind === "string" || kind === "boolean" || value === null || value === undefined) continue;
        if (kind === "number" && value === (value | 0)) continue;
        const isObject = kind === "object" && !Array.isArray(value);
        if (isObject && !(value instanceof RecordSet || Array.isArray(value.rows))) continue;
        if (changed === row) changed = { ...row };
        if (isObject) {
          nested.push([i + 1, name, value]);
          changed[name] = null; // the column keeps its place
        } else if (Number.isSafeInteger(value) || kind === "bigint") {
          changed[name] = String(value);
        } else {
          refuse(value, `row ${i + 1}, column ${JSON.stringify(name)}: `);
        }
      }
      return changed;
    });
    return { plain, nested };
  }

  // ---- Documents

  class Document extends Owner {
    constructor() {
      super(lib.QX_OpenDocument(), lib.QX_FreeDocument);
    }

    static parse(text) {
      const made = new Document();
      const result = made.load(text);
      if (result.ok) return made;
      made.free();
      throw new ParseError(result);
    }

    load(text) {
      const handle = of(this);
      const fault = memory.read(text, (at) => {
        const parsed = lib.QX_ParseDocument(handle, at, memory.results);
        if (parsed === NO_MEMORY) throw new MemoryError();
        if (parsed) return undefined;
        const [offset, line, column, reason] = memory.words.subarray(memory.results / 4);
        return { ok: false, reason: memory.textToNul(reason), offset, line, column };
      });
      return fault ?? { ok: true };
    }

    // The type of a value, with what the type has in memory.results.
    #read(path) {
      const type = memory.withWord(path, (at) => lib.QX_ReadPath(of(this), at, memory.results));
      return type === NO_MEMORY ? fail(new MemoryError()) : TYPES[type + 1];
    }

    type(path) {
      return this.#read(path);
    }

    has(path) {
      return this.#read(path) !== "missing";
    }

    get(path) {
      const type = this.#read(path);
      const view = new DataView(memory.object.buffer, memory.results, 24);
      switch (type) {
        case "null":
          return null;
        case "boolean":
          return view.getFloat64(0, true) !== 0;
        case "integer":
        case "real":
          return view.getFloat64(0, true);
        case "string":
          return memory.textToNul(view.getUint32(16, true));
        default:
          return undefined;
      }
    }

    bigint(path) {
      const type = this.#read(path);
      if (type !== "integer" && type !== "real") return undefined;
      return new DataView(memory.object.buffer).getBigInt64(memory.results + 8, true);
    }

    size(path) {
      const type = this.#read(path);
      return type === "array" || type === "object" ? memory.words[memory.results / 4 + 5] : 0;
    }
  }

  return { RecordSet, Document };
}

// ---- Values -------------------------------------------------------------------------------------

// What a cell is in JavaScript.
function valueOf(kind, text) {
  if (kind === TEXT) return text;
  if (kind === LONG) return Number(text);
  if (kind === BOOL) return Number(text) === 1;
  if (kind === NULL) return null;
  return kind === RECORDSET ? (text === "" ? {} : JSON.parse(text)) : text;
}

// The column of cells.
function columnOf(name, { kinds, kind, empty, values }) {
  let valid = null;
  if (empty > 0) {
    valid = new Uint8Array(kinds.length);
    const isArray = Array.isArray(values);
    for (let i = 0; i < kinds.length; ++i) {
      if (kinds[i] > NULL) valid[i] = 1;
      else if (isArray) values[i] = null;
    }
  }
  return { name, type: KINDS[kind] ?? "text", length: kinds.length, values, valid };
}

// Gives the rows their members of a column.
function addTo(rows, name, { kinds, kind, empty, values }) {
  if (name === "__proto__") {
    kinds.forEach((one, row) => one === NONE || Object.defineProperty(rows[row], name, {
      value: valueOf(one, values[row]), configurable: true, enumerable: true, writable: true }));
  } else if (empty === 0 && (kind === LONG || kind === TEXT) && !isMixed(kinds)) {
    for (let row = 0; row < rows.length; ++row) rows[row][name] = values[row];
  } else {
    for (let row = 0; row < rows.length; ++row) {
      if (kinds[row] !== NONE) rows[row][name] = valueOf(kinds[row], values[row]);
    }
  }
}

// What cells of several kinds are together (text), or many texts; and how many there are not.
function summary(kinds) {
  let kind = NULL;
  let empty = 0;
  for (const one of kinds) {
    if (one > NULL) kind = kind === NULL || kind === one ? one : TEXT; // text stays text
    else ++empty;
  }
  return { kind, empty };
}

const isMixed = (kinds) => kinds.some((kind) => kind !== kinds[0]);

const isTexts = (values) => values.every((one) => typeof one === "string" || one === null);

function refuse(value, where = "") {
  const what = typeof value === "number" ? "numbers that are no safe integers"
    : Array.isArray(value) ? "arrays" : `a ${typeof value}`;
  throw new TypeError(`${where}there are no cells for ${what}`);
}

function refuseLosses(losses) {
  if (losses.cells === 0) return;
  const where = `row ${losses.firstRow}, column ${JSON.stringify(losses.firstColumn)}`;
  if (losses.cut) throw new RangeError(`${where}: a NUL would end the text there`);
  throw new TypeError(`${where}: there are no cells for real numbers and arrays`);
}

// ---- Opening ------------------------------------------------------------------------------------

async function compile(source) {
  const given = await source;
  if (given instanceof WebAssembly.Module) return given;
  if (typeof Response === "undefined" || !(given instanceof Response)) return WebAssembly.compile(given);
  if (!given.ok) throw new Error(`${given.url}: ${given.status}`);
  if (given.headers.get("content-type") === "application/wasm") return WebAssembly.compileStreaming(given);
  return WebAssembly.compile(await given.arrayBuffer());
}

// openLibrary() of a platform: fetchModule gives the module's bytes, or a response with them.
export function opener(fetchModule) {
  let compiled;
  let shared;
  const open = async ({ wasm, maximumMemory = 2 ** 31 } = {}) => {
    const module = await (wasm === undefined ? (compiled ??= compile(fetchModule())) : compile(wasm));
    const memory = new Memory(maximumMemory);
    const { exports } = await WebAssembly.instantiate(module, memory.imports);
    memory.use(exports);
    return Object.freeze({ ...classes(memory), memorySize: () => memory.object.buffer.byteLength });
  };
  return (options) => {
    if (options !== undefined) return open(options);
    shared ??= open();
    shared.catch(() => { shared = compiled = undefined; }); // a failed request may be tried again
    return shared;
  };
}
