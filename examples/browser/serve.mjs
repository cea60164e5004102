// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Serves this folder, with the npm package as qxrecordset/: serve.mjs PACKAGE PORT. Anything that serves
// files does as well, with the package copied to that folder.
import { readFile } from "node:fs/promises";
import { createServer } from "node:http";
import { join, normalize } from "node:path";
import { fileURLToPath } from "node:url";

const TYPES = { html: "text/html; charset=utf-8", css: "text/css", js: "text/javascript", wasm: "application/wasm" };
const page = fileURLToPath(new URL(".", import.meta.url));

export function serve(folder, port) {
  const server = createServer(async (request, response) => {
    const path = normalize(decodeURIComponent(new URL(request.url, "http://localhost").pathname));
    const file = path.startsWith("/qxrecordset/") ? join(folder, path.slice(12)) : join(page, path === "/" ? "index.html" : path);
    try {
      const content = await readFile(file);
      response.writeHead(200, { "content-type": TYPES[file.split(".").at(-1)] ?? "text/plain" }).end(content);
    } catch {
      response.writeHead(404).end();
    }
  });
  return new Promise((resolve) => server.listen(port, "127.0.0.1", () => resolve(server)));
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  const server = await serve(process.argv[2], Number(process.argv[3]));
  console.log(`http://localhost:${server.address().port}/`);
}
