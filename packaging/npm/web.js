// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The package for browsers: the module comes from the server that this file came from.
import { opener } from "./library.js";

export { MemoryError, ParseError } from "./library.js";
export const openLibrary = opener(() => fetch(new URL("./qxrecordset.wasm", import.meta.url)));
