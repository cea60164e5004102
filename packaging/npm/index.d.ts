// Part of libQXRecordSet. MIT licence, see LICENSE.
/// <reference lib="esnext.disposable" />

/**
 * Record sets: tables in memory that programs exchange as JSON text.
 *
 * ```js
 * import { openLibrary } from "qxrecordset";
 *
 * const { RecordSet } = await openLibrary();
 * const people = RecordSet.parse('{"rows":[{"name":"Ada","born":1815},{"name":"Grace"}]}');
 * people.set(2, "born", 1906);
 * console.log(people.column("born").values, people.text());
 * people.free();
 * ```
 *
 * Rows count from 1. Columns are named, or given by their index, from 1 in the order in which they were
 * added. Strings go in and come out unit by unit, halves of surrogate pairs included; a NUL ends a text,
 * and is refused with `RangeError` where a name or a cell is given. A record set or document that is used
 * after its `free()` throws `Error`; exhausted memory throws `MemoryError`, and everything stays usable.
 * @packageDocumentation
 */

/**
 * Opens the library. Without options every call gives the same one, with all its record sets in one
 * memory; with options each call makes its own.
 */
export function openLibrary(options?: LibraryOptions): Promise<Library>;

export interface LibraryOptions {
  /** The module, where it does not lie beside the package's files: bytes, a response, or a compiled one. */
  wasm?: WasmSource | Promise<WasmSource>;
  /** The most memory that the library may have, in bytes: from 2 MB to 2 GB, which is the default. */
  maximumMemory?: number;
}

export type WasmSource = BufferSource | Response | WebAssembly.Module;

export interface Library {
  readonly RecordSet: RecordSetClass;
  readonly Document: DocumentClass;
  /** Bytes of memory that the library has; it never becomes less. */
  memorySize(): number;
}

// ---- Values and results ---------------------------------------------------------------------------

/** What a cell is read as. A nested record set is a plain object: its row, or `{ rows: [...] }`. */
export type Value = null | boolean | number | string | NestedValue;
export interface NestedValue { [name: string]: unknown }

/**
 * What can be written to a cell. Integers beyond 32 bits become text cells with their digits. Real
 * numbers, arrays, `undefined` and functions throw `TypeError`, integers beyond 64 bits `RangeError`.
 */
export type CellInput = Value | bigint | RecordSet;

/** A row. A member that is `undefined` gives no cell. */
export interface RowInput { [name: string]: CellInput | undefined }

/** What a cell holds; `undefined` where there is none. */
export type CellType = "null" | "integer" | "boolean" | "text" | "recordset";

/**
 * What cells lost when a text was loaded: how many did, the first of them, and what, by value. There are
 * no cells for real numbers and arrays, which become the empty text; a text ends at its first NUL; an
 * integer beyond 32 bits becomes the nearest one (write it as a string where that matters).
 */
export interface Losses {
  readonly cells: number;
  readonly firstRow: number;
  readonly firstColumn: string | undefined;
  readonly reals: number;
  readonly arrays: number;
  readonly cut: number;
  readonly limited: number;
}

/**
 * Why and where a text was refused. In a string, `offset` is its index there, and `column` counts its
 * units from 1; in bytes both count bytes. Lines count from 1.
 */
export interface Fault {
  readonly reason: string;
  readonly offset: number;
  readonly line: number;
  readonly column: number;
}

export type LoadResult = { readonly ok: true; readonly losses: Losses } | ({ readonly ok: false } & Fault);
export type ParseResult = { readonly ok: true } | ({ readonly ok: false } & Fault);

/** A text was refused. */
export class ParseError extends SyntaxError implements Fault {
  constructor(fault: Fault);
  readonly reason: string;
  readonly offset: number;
  readonly line: number;
  readonly column: number;
}

/** Memory is exhausted: the browser's, or `maximumMemory`. */
export class MemoryError extends RangeError {}

// ---- Columns --------------------------------------------------------------------------------------

/**
 * The values of a column, a copy: item 0 is that of row 1. `valid` has a 1 for each row with a value and
 * a 0 for a null or a missing cell; it is `null` when all have one. Without one, a number is 0, and
 * everything else null. A column whose cells are of several kinds is one of texts.
 */
export type Column = IntegerColumn | BooleanColumn | TextColumn | RecordSetColumn | NullColumn;

interface ColumnBase {
  readonly name: string;
  readonly length: number;
  readonly valid: Uint8Array | null;
}
export interface IntegerColumn extends ColumnBase { readonly type: "integer"; readonly values: Int32Array }
/** With 1 for true. */
export interface BooleanColumn extends ColumnBase { readonly type: "boolean"; readonly values: Uint8Array }
export interface TextColumn extends ColumnBase { readonly type: "text"; readonly values: (string | null)[] }
/** The JSON texts of nested record sets. */
export interface RecordSetColumn extends ColumnBase {
  readonly type: "recordset";
  readonly values: (string | null)[];
}
/** No row has a value. */
export interface NullColumn extends ColumnBase { readonly type: "null"; readonly values: null[] }

/** Values for `fromColumns`: the fastest are `Int32Array`, arrays of strings, and what `columns()` gave. */
export type ColumnInput = Column | readonly (CellInput | undefined)[] | Int32Array | Int16Array | Int8Array |
  Uint8Array | Uint16Array | Uint32Array | Float64Array | BigInt64Array;

// ---- Record sets ----------------------------------------------------------------------------------

export interface RecordSetClass {
  /** An empty record set. */
  new (): RecordSet;
  /** A record set of a JSON text (a string, or its UTF-8 bytes): an object is row 1, `{"rows":[...]}`
   *  several rows. Throws `ParseError`. */
  parse(text: string | Uint8Array): RecordSet;
  /** A record set of objects. Rows behind the last one that has a cell are lost. */
  fromRows(rows: Iterable<RowInput>): RecordSet;
  /** A record set of columns by name. */
  fromColumns(columns: { [name: string]: ColumnInput } | Iterable<readonly [string, ColumnInput]>): RecordSet;
}

export interface RecordSet {
  /** Adds the rows of a JSON text to those that are there, cell by cell. One that is refused adds nothing. */
  load(text: string | Uint8Array): LoadResult;
  /** What the last text lost that was loaded. */
  readonly losses: Losses;
  /** The compact JSON text; "" of a record set that nothing was ever put in. */
  text(): string;
  /** The same as UTF-8, for a file or a request: cheaper than `text()`. Half a surrogate pair has three
   *  bytes there, which strict readers refuse. */
  bytes(): Uint8Array;
  /** Plain objects, by which `JSON.stringify` writes a record set. */
  toJSON(): NestedValue;
  /** An independent copy. */
  copy(): RecordSet;
  /** Adds all cells of another record set of this library, each to the same row and column. */
  merge(other: RecordSet): void;
  /** Removes all rows and columns. */
  clear(): void;

  /** The largest row number that was written; 0 for none. */
  readonly rowCount: number;
  /** In the order in which the columns were added. */
  readonly columnNames: string[];
  /** The index of a column, which is added if it is new. */
  addColumn(name: string): number;

  /** The value of a cell; `undefined` when there is none. */
  get(row: number, column: string | number): Value | undefined;
  /** Writes a cell; a new name becomes a column. */
  set(row: number, column: string | number, value: CellInput): void;
  type(row: number, column: string | number): CellType | undefined;
  /** The text of a cell of any type: digits of an integer, "1" or "0", "" of null, JSON text. */
  cellText(row: number, column: string | number): string | undefined;
  /** A new record set of a cell's text; `undefined` when there is no such cell, or it holds no object. */
  nested(row: number, column: string | number): RecordSet | undefined;

  /** All rows, each an object of the cells that exist. Takes memory for every number up to `rowCount`. */
  rows(): { [name: string]: Value }[];
  /** The values of one column, or of all by name; `undefined` when there is no such column. */
  column(column: string | number): Column | undefined;
  columns(): Map<string, Column>;

  /** Releases the record set. What is never freed is released some time after nothing refers to it. */
  free(): void;
  [Symbol.dispose](): void;
}

// ---- Documents ------------------------------------------------------------------------------------

export type DocumentType =
  "missing" | "null" | "boolean" | "integer" | "real" | "string" | "array" | "object";

export interface DocumentClass {
  /** An empty document. */
  new (): Document;
  /** A document of a JSON text: an object or an array; what follows it is ignored. Throws `ParseError`. */
  parse(text: string | Uint8Array): Document;
}

/**
 * A JSON document of any form, read by path: names and positions from 0 joined by ".", such as
 * "rows.3.name". There is no escape for "."; one in front belongs to the first name.
 */
export interface Document {
  /** Reads a text in place of what the document held. After one that is refused it holds nothing, or what
   *  stands before the fault. */
  load(text: string | Uint8Array): ParseResult;
  type(path: string): DocumentType;
  has(path: string): boolean;
  /** A null, boolean, string (up to its first NUL) or number (the nearest, as from `JSON.parse`);
   *  `undefined` for arrays, objects and what is missing. */
  get(path: string): null | boolean | number | string | undefined;
  /** A number as an integer of 64 bits: cut towards 0, and beyond the range the nearest one. */
  bigint(path: string): bigint | undefined;
  /** Number of members or elements of an object or array; 0 of everything else. */
  size(path: string): number;
  free(): void;
  [Symbol.dispose](): void;
}
