// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Compiled, not run: what a program in TypeScript may write, and in the lines under @ts-expect-error what
// it may not.
import { openLibrary, MemoryError, ParseError } from "qxrecordset";
import type { Column, Document, Fault, Library, LoadResult, RecordSet, Value } from "qxrecordset";

const library: Library = await openLibrary({ maximumMemory: 2 ** 28, wasm: fetch("x.wasm") });
const { RecordSet, Document } = library;

export function sum(text: string | Uint8Array): number {
  using set = RecordSet.parse(text);
  const column: Column | undefined = set.column("amount");
  if (column?.type !== "integer") return 0;
  const values: Int32Array = column.values;
  return values.reduce((total, value, i) => total + (column.valid?.[i] === 0 ? 0 : value), 0);
}

export function report(result: LoadResult): string {
  if (result.ok) return String(result.losses.reals);
  const { line, column }: Fault = result;
  return `${line}:${column}: ${result.reason}`;
}

export function use(set: RecordSet, doc: Document): (Value | undefined)[] {
  set.set(1, "a", 5n);
  set.set(1, "b", RecordSet.fromRows([{ a: 1, b: undefined, c: { d: null } }]));
  RecordSet.fromColumns({ a: new Int32Array(2), b: ["x", null], c: [1, undefined] });
  RecordSet.fromColumns(set.columns());
  const names: string[] = [...set.columns().keys()];
  const count: bigint | undefined = doc.bigint("a.0");
  try {
    Document.parse("[");
  } catch (error) {
    if (error instanceof ParseError) return [error.offset, error.reason];
    if (error instanceof MemoryError) return [error.message];
  }
  return [set.get(1, names[0] ?? 1), String(count), set.nested(1, "b")?.rowCount];
}

const set = new RecordSet();
// @ts-expect-error there are no cells for arrays
set.set(1, "a", [1]);
// @ts-expect-error nor for functions
RecordSet.fromRows([{ a: () => 1 }]);
// @ts-expect-error losses are there of what was loaded
report(set.load("{}")).losses;
// @ts-expect-error a fault has no losses
((result: LoadResult) => result.losses)(set.load("{}"));
// @ts-expect-error the row count follows from the cells
set.rowCount = 5;
// @ts-expect-error texts may be null
((column: Column) => column.type === "text" && column.values[0].length)(set.column("a")!);
