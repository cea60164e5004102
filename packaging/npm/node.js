// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The package for Node.js: the module comes from the file system.
import { readFile } from "node:fs/promises";
import { opener } from "./library.js";

export { MemoryError, ParseError } from "./library.js";
export const openLibrary = opener(() => readFile(new URL("./qxrecordset.wasm", import.meta.url)));
