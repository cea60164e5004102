// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The programs in JavaScript of the pages print what the pages show.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { readFileSync, writeFileSync } from "node:fs";
import { test } from "node:test";

for (const page of ["docs/hosts.md", "packaging/npm/README.md"]) {
  const text = readFileSync(`${process.env.SOURCE}/${page}`, "utf8");
  const programs = [...text.matchAll(/```js\n([^]*?)```\s+```text\n([^]*?)```/g)];
  test(`${page}: ${programs.length} programs`, () => {
    assert.equal(programs.length, text.split("```js\n").length - 1);
    assert.ok(programs.length > 0);
    programs.forEach(([, program, shown], i) => {
      const file = `page-${page.replace(/\W/g, "-")}-${i}.mjs`;
      writeFileSync(file, program);
      assert.equal(execFileSync(process.execPath, [file], { encoding: "utf8" }), shown);
    });
  });
}
