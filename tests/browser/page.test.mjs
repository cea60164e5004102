// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What a person does with the page of examples/browser, done in Chromium.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { after, before, test } from "node:test";
import { chromium } from "playwright-core";

const { serve } = await import(`${process.env.SOURCE}/examples/browser/serve.mjs`);
let server, browser, page, faults;

before(async () => {
  server = await serve(process.env.PACKAGE, 0);
  browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: [
    "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
    "--disable-component-update", "--disable-sync"] });
});
after(async () => {
  await browser?.close();
  server?.close();
});

// A test with a page of its own, on which nothing may go wrong unseen.
function onPage(name, work, options = {}) {
  test(name, async () => {
    const context = await browser.newContext({ viewport: { width: 1200, height: 700 }, acceptDownloads: true,
                                               permissions: ["clipboard-read", "clipboard-write"], ...options });
    page = await context.newPage();
    faults = [];
    page.on("pageerror", (error) => faults.push(error.message));
    page.on("console", (message) => message.type() === "error" && faults.push(message.text()));
    await page.goto(`http://127.0.0.1:${server.address().port}/`);
    await work();
    assert.deepEqual(faults, []);
    await context.close();
  });
}

async function show(text) {
  await page.fill("#text", text);
  await page.keyboard.press("Control+Enter");
  await page.waitForSelector("#c0-0");
}
const column = (index) => page.$$eval(`#body [id$="-${index}"]`, (cells) => cells
  .sort((a, b) => parseInt(a.id.slice(1)) - parseInt(b.id.slice(1))).map((cell) => cell.textContent));
const active = () => page.getAttribute("#grid", "aria-activedescendant");
const status = () => page.textContent("#status");
const large = async () => {
  await page.click("[data-sample=large]");
  await page.waitForSelector("#c0-0");
};

onPage("a text is shown as a table with its types", async () => {
  await show('{"rows":[{"n":1,"b":true,"t":"x","z":null,"o":{"k":7,"l":{"m":1}}},{"n":-20,"t":"ä😀"}]}');
  assert.deepEqual(await column(0), ["1", "-20"]);
  assert.deepEqual(await column(1), ["true", ""]);
  assert.deepEqual(await column(2), ["x", "ä😀"]);
  assert.deepEqual(await column(3), ["null", ""]);
  assert.deepEqual(await column(4), ["k 7, l …", ""]);
  assert.match(await status(), /^2 rows, 5 columns/);
  assert.equal(await page.getAttribute("#grid", "aria-rowcount"), "3");
  assert.equal(await page.getAttribute("#c1-2", "aria-colindex"), "4");
});

// Text, message, and what stands above the caret.
const FAULTY = [
  ['{"rows":[\n {"a":1},\n {"a":x}]}', /^Line 3, column 7: Expected a value\./, "x"],
  ['{"漢字😀\t":oops}', /^Line 1, column 10: Expected a value/, "o"],
  ['a,b\n1,2\n3,4,5\n', /^Line 3, column 5: There are 2 columns, this is one more/, "5"],
  ['a,b\n1,"x\n', /^Line 2, column 3: A quote that nothing ends/, '"'],
  ["", /^There is no text yet/, null],
  ["[1]", /^Line 1, column 1: .* an array is no record set/, "["],
  ["{}", /^There are no cells in it/, null],
];

onPage("a faulty text is refused with a caret under the fault", async () => {
  for (const [text, message, at] of FAULTY) {
    await page.fill("#text", text);
    await page.click("button.primary");
    await page.waitForFunction((source) => new RegExp(source).test(document.getElementById("fault").textContent),
                               message.source);
    assert.equal(await page.getAttribute("#fault", "role"), "alert");
    if (at === null) continue;
    const under = await page.evaluate(() => {
      const pre = document.querySelector("#fault pre");
      const caret = pre.querySelector(".caret").getBoundingClientRect();
      const text = [...pre.childNodes].filter((node) => node.nodeType === Node.TEXT_NODE)[1];
      const range = document.createRange();
      range.setStart(text, 0);
      range.setEnd(text, 1);
      return { text: range.toString(), off: Math.abs(range.getBoundingClientRect().left - caret.left) };
    });
    assert.equal(under.text, at, text);
    assert.ok(under.off < 1, `${under.off} pixels beside it`);
  }
  await page.fill("#text", FAULTY[0][0]);
  await page.click("button.primary");
  await page.click("text=Go there");
  const selected = await page.$eval("#text", (area) => area.value.slice(area.selectionStart, area.selectionEnd));
  assert.equal(selected, "x");
});

onPage("what a text loses is told", async () => {
  await show('{"rows":[{"a":1},{"a":1.5,"b":[1],"c":12345678901}]}');
  assert.match(await page.textContent("#losses"), /^3 cells .* 1 real number, 1 array, 1 integer beyond 32 bits.*row 2, column “a”/);
});

onPage("CSV becomes typed columns", async () => {
  await show('name;n;note\n"Ada ""A."";x";7;\r\nBob;-12;"two\nlines"\n');
  assert.deepEqual(await column(0), ['Ada "A.";x', "Bob"]);
  assert.deepEqual(await column(1), ["7", "-12"]);
  assert.deepEqual(await column(2), ["null", "two\nlines"]);
  assert.equal(await page.getAttribute("#c0-1", "class"), "number");
});

onPage("100,000 rows scroll with few of them drawn", async () => {
  await large();
  const drawnRows = () => page.$$eval("#body [role=row]", (rows) => rows.length);
  for (const part of [0.5, 0.123, 1]) {
    await page.$eval("#grid", (grid, at) => { grid.scrollTop = at * grid.scrollHeight; }, part);
    await page.waitForTimeout(60);
    assert.ok(await drawnRows() < 60);
    const places = await page.$$eval("#body [role=row]", (rows) => {
      const { top, bottom } = document.getElementById("grid").getBoundingClientRect();
      return rows.filter((row) => row.getBoundingClientRect().bottom > top && row.getBoundingClientRect().top < bottom)
        .map((row) => Number(row.dataset.place)).sort((a, b) => a - b);
    });
    assert.ok(Math.abs(places[0] - part * 100000) < 40, `${part}: ${places[0]}`);
    places.forEach((place, i) => assert.equal(place, places[0] + i)); // without a gap
  }
  assert.equal(await page.textContent("#c99999-0"), "800000");
});

onPage("columns sort up, down and back, numbers as numbers", async () => {
  await show('{"rows":[{"i":10,"d":"9.5","t":"item 10"},{"i":9,"d":"10.25","t":"item 9"},{"t":"b"},{"i":-100,"d":"-1","t":"a"},{"i":9,"d":null,"t":"B"}]}');
  const sorts = { 0: [["-100", "9", "9", "10", ""], ["10", "9", "9", "-100", ""]],
                  1: [["-1", "9.5", "10.25", "", "null"], ["10.25", "9.5", "-1", "", "null"]],
                  2: [["a", "b", "B", "item 9", "item 10"], ["item 10", "item 9", "B", "b", "a"]] };
  for (const [index, [up, down]] of Object.entries(sorts)) {
    const original = await column(index);
    for (const [wanted, mark] of [[up, "ascending"], [down, "descending"], [original, "none"]]) {
      await page.click(`#h${index}`);
      assert.deepEqual(await column(index), wanted, `${index} ${mark}`);
      assert.equal(await page.getAttribute(`#h${index}`, "aria-sort"), mark);
    }
  }
  await page.click("#h0");
  assert.deepEqual(await column(2), ["a", "item 9", "B", "item 10", "b"]); // whole rows, equal ones in their order
  await page.click("#h1");
  assert.equal(await page.getAttribute("#h0", "aria-sort"), "none");
  assert.match(await status(), /^Sorted by d, ascending/);
});

onPage("the keyboard alone moves, sorts, opens and returns", async () => {
  await large();
  const press = async (...keys) => { for (const key of keys) await page.keyboard.press(key); };
  assert.equal(await page.evaluate(() => document.activeElement.id), "grid");
  await press("ArrowDown", "ArrowRight", "ArrowRight");
  assert.equal(await active(), "c1-2");
  await press("Control+End");
  assert.equal(await active(), "c99999-6");
  assert.ok(await page.isVisible("#c99999-6"));
  await press("Control+Home", "ArrowUp", "ArrowRight", "ArrowRight", "ArrowRight", "Enter");
  assert.equal(await page.getAttribute("#h3", "aria-sort"), "ascending");
  const cents = (await column(3)).map(Number);
  assert.deepEqual(cents, [...cents].sort((a, b) => a - b));
  await press("ArrowDown", "PageDown", "End");
  const place = await active();
  const row = await page.$eval(`#${place}`, (cell) => cell.parentElement.firstChild.textContent);
  const top = await page.$eval("#grid", (grid) => grid.scrollTop);
  await press("Enter");
  assert.equal(await page.textContent("#path [aria-current]"), `parcel of row ${row}`);
  await press("End", "Enter");
  assert.deepEqual(await page.$$eval("#head .label", (labels) => labels.map((one) => one.textContent)), ["width", "height"]);
  await press("Escape", "Escape");
  await page.waitForSelector(`#${place}`);
  assert.equal(await active(), place);
  assert.equal(await page.$eval("#grid", (grid) => grid.scrollTop), top);
  assert.equal(await page.getAttribute("#h3", "aria-sort"), "ascending");
  await press("Escape");
  await page.waitForSelector("#start:not([hidden])");
  assert.equal(await page.evaluate(() => document.activeElement.id), "text");
});

onPage("nested sets open by a click, and a path leads back", async () => {
  await show('{"a":{"b":{"c":"deep"},"n":2}}');
  await page.click("#c0-0");
  await page.click("#c0-0");
  assert.deepEqual(await column(0), ["deep"]);
  assert.equal(await page.textContent("#path"), "texta of row 1b of row 1");
  await page.click("#path button >> nth=0");
  await page.waitForSelector("#h0 >> text=a");
  assert.equal(await page.textContent("#path"), "text");
  await page.click("#c0-0");
  await page.goBack();
  await page.waitForFunction(() => document.getElementById("path").textContent === "text");
});

onPage("the text is saved and copied as the library writes it", async () => {
  await show('{"rows":[{"b":"ä\\ud83d\\ude00","a":1},{"o":{"k":[1],"j":2}}]}');
  const written = '{"rows":[{"a":1,"b":"ä😀"},{"o":{"k":null,"j":2}}]}';
  const [download] = await Promise.all([page.waitForEvent("download"), page.click("#save")]);
  assert.equal(download.suggestedFilename(), "text.json");
  assert.equal(readFileSync(await download.path(), "utf8"), written);
  await page.click("#copy");
  await page.waitForSelector("#copy >> text=Copied");
  assert.equal(await page.evaluate(() => navigator.clipboard.readText()), written);
});

onPage("files are opened and dropped", async () => {
  await page.setInputFiles("#file", { name: "people.csv", mimeType: "text/csv", buffer: Buffer.from("\ufeffname,born\nAda,1815\n") });
  await page.waitForSelector("#c0-0");
  assert.equal(await page.textContent("#path"), "people.csv");
  assert.equal(await page.textContent("#h0"), "name");
  const transfer = await page.evaluateHandle(() => {
    const made = new DataTransfer();
    made.items.add(new File(['{"dropped":"yes"}'], "x.json"));
    return made;
  });
  await page.dispatchEvent("body", "dragover", { dataTransfer: transfer });
  assert.ok(await page.isVisible("#drop"));
  await page.dispatchEvent("body", "drop", { dataTransfer: transfer });
  await page.waitForSelector("#h0 >> text=dropped");
  assert.ok(!(await page.isVisible("#drop")));
});

// Text and ground have a contrast of 4.5 at least, and nothing is wider than the screen.
for (const colorScheme of ["light", "dark"]) {
  for (const width of [1280, 360]) {
    onPage(`it is readable at ${width} pixels, ${colorScheme}`, async () => {
      const look = async (name) => {
        assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth), name);
        const poor = await page.evaluate(() => {
          const channels = (color) => color.match(/[\d.]+/g).map(Number);
          const light = (color) => channels(color).slice(0, 3)
            .map((c) => (c / 255 <= 0.04045 ? c / 255 / 12.92 : ((c / 255 + 0.055) / 1.055) ** 2.4))
            .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
          const ground = (one) => {
            for (let at = one; at; at = at.parentElement) {
              const { backgroundColor } = getComputedStyle(at);
              if (channels(backgroundColor)[3] !== 0) return backgroundColor;
            }
            return "rgb(255, 255, 255)";
          };
          return [...document.body.querySelectorAll("*")].filter((one) => one.checkVisibility({ visibilityProperty: true }) &&
            [...one.childNodes].some((node) => node.nodeType === 3 && node.textContent.trim() !== "")).filter((one) => {
            const [a, b] = [light(getComputedStyle(one).color), light(ground(one))].sort((x, y) => y - x);
            return (a + 0.05) / (b + 0.05) < 4.5;
          }).map((one) => one.outerHTML.slice(0, 80));
        });
        assert.deepEqual(poor, [], name);
        if (process.env.SHOTS) await page.screenshot({ path: `${process.env.SHOTS}/${width}-${colorScheme}-${name}.png` });
      };
      await look("start");
      await page.click("[data-sample=faulty]");
      await page.waitForSelector("#fault:not([hidden])");
      await look("fault");
      await large();
      await look("table");
      await page.click("#c0-0");
      await page.keyboard.press("End");
      await page.keyboard.press("Enter");
      await look("nested");
    }, { colorScheme, viewport: { width, height: 800 } });
  }
}
