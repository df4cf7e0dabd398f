// SPDX-License-Identifier: MIT
// The page of `tlexpand explain` in a browser: pointing, clicking, the keyboard, a large output, and
// no word on the console. Pictures go to the given folder.
//
//     node page_test.js TLEXPAND CHROMIUM FOLDER
"use strict";

const assert = require("node:assert");
const {execFileSync} = require("node:child_process");
const fs = require("node:fs");
const path = require("node:path");
const {pathToFileURL} = require("node:url");
const {chromium} = require("playwright-core");

const [tool, executablePath, folder] = process.argv.slice(2);
fs.mkdirSync(folder, {recursive: true});
process.chdir(folder);

const EXAMPLE = path.resolve(__dirname, "../../examples/generator/shapes.tl");
const SMALL = {
  "lib.tl": "@def pair(first, second) =\n{\n    int first = 1; // <b>&amp;</b>\n" +
            "    int second = @(first_value + 1);\n}\n@let int first_value = {41}\n",
  "main.tl": "@import \"lib.tl\"\n/* ä 😀 */\nstruct S\n{\n    pair(alpha, beta)\n" +
             "    @for(name in [x, y@(1)])\n    {\n        char name;\n\n    }@//\n};\n",
};

function explain(name, files, ...options) {
  for (const [file, text] of Object.entries(files))
    fs.writeFileSync(file, text);
  execFileSync(tool, ["explain", ...options, "-o", name]);
  return pathToFileURL(path.resolve(name)).href;
}

/// A page whose console must stay silent and that must ask for nothing.
async function open(browser, url, settings = {}) {
  const context = await browser.newContext({viewport: {width: 1280, height: 800}, ...settings});
  const page = await context.newPage();
  page.faults = [];
  page.on("console", message => page.faults.push(message.text()));
  page.on("pageerror", error => page.faults.push(String(error)));
  page.on("request", request => {
    if (request.url() !== url && !request.url().startsWith("data:"))
      page.faults.push(request.url());
  });
  await page.goto(url);
  return page;
}

const texts = (page, selector) =>
  page.$$eval(selector, elements => elements.map(element => element.textContent).join("|"));
const piece = (page, side, text) =>
  page.locator(`#${side} [data-start]`, {hasText: text}).first();

async function testPointing(page) {
  await piece(page, "output", "beta").hover();
  assert.match(await page.textContent("#status"),
               /^out.*:\d+:\d+: copied from main\.tl:5:17$/);
  assert.strictEqual(await texts(page, "#sources .hit"), "beta");
  await piece(page, "output", "42").hover();
  assert.match(await page.textContent("#status"), /calculated by lib\.tl:4:18$/);
  assert.strictEqual(await texts(page, "#sources .hit"), "@");
  await piece(page, "sources", " char").hover();
  assert.strictEqual((await texts(page, "#output .hit")).trim(), "char|char");
  assert.match(await page.textContent("#status"), /2 places of the output$/);
  await page.mouse.move(5, 5);
  assert.strictEqual(await texts(page, ".hit"), "");
}

async function testPinning(page) {
  await piece(page, "output", "beta").click();
  assert.strictEqual(await texts(page, "#sources .pin"), "beta");
  assert.match(await page.textContent("#details"), /main\.tl:5:17 copied/);
  await page.mouse.move(5, 5);
  assert.strictEqual(await texts(page, "#sources .pin"), "beta");
  await page.locator("#details button").first().click();
  assert.strictEqual(await texts(page, "#sources .current"), "beta");
  await page.keyboard.press("Escape");
  assert.strictEqual(await texts(page, ".pin"), "");
  assert.match(await page.textContent("#details"), /^Point at a text/);
}

async function testKeyboard(page) {
  await page.locator("#output").focus();
  await page.keyboard.press("Home");
  const first = await texts(page, "#output .current");
  await page.keyboard.press("ArrowDown");
  await page.keyboard.press("ArrowDown");
  await page.keyboard.press("ArrowDown");
  await page.keyboard.press("ArrowRight");
  assert.notStrictEqual(await texts(page, "#output .current"), first);
  assert.strictEqual((await texts(page, "#output .current")).length > 0, true);
  await page.keyboard.press("Enter");
  assert.notStrictEqual(await texts(page, "#sources .pin"), "");
  await page.keyboard.press("End");
  await page.keyboard.press("PageUp");
  await page.keyboard.press("Escape");
  await page.keyboard.press("Shift+Tab");
  const focused = await page.evaluate(() => document.activeElement.id);
  assert.strictEqual(focused, "sources");
}

/// What calculated text looks like besides its colour.
async function testKinds(page) {
  const decoration = selector => page.locator(selector).first()
    .evaluate(element => getComputedStyle(element).textDecorationStyle);
  assert.strictEqual(await decoration("#output .calculated"), "dotted");
  assert.strictEqual(await decoration("#output .made"), "dashed");
  assert.match(await page.locator("#output .indentation").first()
    .evaluate(element => getComputedStyle(element).backgroundImage), /repeating-linear-gradient/);
}

async function testLarge(browser) {
  let text = "@def row(i) = {    {i, @(i * 2), \"name\"},}\nint table[][2] = {\n";
  for (let i = 0; text.length < 1.2e6; ++i)
    text += `row(${i})\nplain text in line ${i} of the file\n`;
  const url = explain("large.html", {"large.tl": text + "};\n"}, "large.tl");
  const begin = Date.now();
  const page = await open(browser, url);
  await page.locator("#output [data-start]").first().waitFor();
  console.log(`a page of ${fs.statSync("large.html").size} bytes is there after ` +
              `${Date.now() - begin} ms`);
  assert.ok(await page.locator(".row").count() < 300);
  await page.locator("#output").focus();
  await page.keyboard.press("End");
  await page.keyboard.press("Enter");
  assert.match(await page.textContent("#status"), /copied from large\.tl:\d{5}:/);
  const rows = await page.$eval("#output", element => element.scrollTop > 100000);
  assert.ok(rows);
  assert.ok(await page.locator("#output .pin").isVisible());
  const box = await page.locator("#output .pin").boundingBox();
  const pane = await page.locator("#output").boundingBox();
  assert.ok(box.y >= pane.y && box.y + box.height <= pane.y + pane.height);
  await page.screenshot({path: "large.png"});
  assert.deepStrictEqual(page.faults, []);
}

/// Elements of lists and rows of data light up where they stand; the chain is that of the run.
async function testRows(browser, colorScheme) {
  const files = {
    "rows.csv": "type,name\nint,alpha\nunsigned,beta\n",
    "lib.tl": "@def field(type, name) =\n{\n    type name = 0; // @str(name)\n}\n",
    "main.tl": "@import \"lib.tl\"\n@def extra =\n{\n    [gamma,\n     delta]\n}\nstruct Row\n{\n" +
               "    @for((type, name) in rows)\n    {\n        field(type, name)\n\n    }@//\n" +
               "    @for(name in extra)\n    {\n        field(int, name)\n\n    }@//\n};\n",
  };
  const url = explain("rows.html", files, "--list", "rows=rows.csv", "main.tl");
  const page = await open(browser, url, {colorScheme});
  await piece(page, "output", "beta").hover();
  assert.strictEqual(await texts(page, "#sources .hit"), "beta");
  assert.match(await page.textContent("#status"), /copied from rows\.csv:3:10$/);
  await piece(page, "output", "delta").click();
  assert.strictEqual(await texts(page, "#sources .pin"), "delta");
  const details = await page.textContent("#details");
  const steps = ["main.tl:5:6 copied", "main.tl:16:20 in expansion of macro 'name'",
                 "lib.tl:3:10 in expansion of macro 'name'",
                 "main.tl:16:9 in expansion of macro 'field'", "main.tl:14:5 in round 2 of the loop"];
  let from = 0;
  for (const step of steps) {
    const at = details.indexOf(step, from);
    assert.notStrictEqual(at, -1, `${step} in ${details}`);
    from = at + step.length;
  }
  await piece(page, "sources", "field").nth(0).hover();
  await page.screenshot({path: `rows-${colorScheme}.png`});
  assert.deepStrictEqual(page.faults, []);
}

/// A long line scrolls to the side only where that is needed; tabs count from the line's beginning;
/// columns are bytes.
async function testLongLines(browser) {
  const words = Array.from({length: 300}, (_, i) => `word${i}`).join(" ");
  const files = {"long.tl": `@def x = {1}\n\u00e4 ${words} x end\na\tb\n\tc\n`};
  const page = await open(browser, explain("long.html", files, "long.tl"));
  const scrolled = side => page.$eval(`#${side}`, element => element.scrollLeft);
  await page.$eval("#output", element => { element.scrollLeft = 800; });
  await page.locator("#output .number").first().waitFor();
  await page.mouse.click(900, (await page.locator("#output .row").first().boundingBox()).y + 10);
  assert.strictEqual(await scrolled("output"), 800);
  await piece(page, "output", "1").nth(0).waitFor();
  await page.locator("#output .calculated, #output [data-start]", {hasText: /^1$/}).first().click();
  assert.match(await page.textContent("#status"), /copied from long\.tl:1:11$/);
  const far = await scrolled("output");
  assert.ok(far > 800);
  assert.strictEqual(await scrolled("sources"), 0);
  // What is in view stays where it is.
  await page.$eval("#sources", element => { element.scrollLeft = 5; });
  await page.locator("#output [data-start]", {hasText: /^1$/}).first().click();
  assert.strictEqual(await scrolled("output"), far);
  assert.strictEqual(await scrolled("sources"), 5);
  await page.locator("#output [data-start]", {hasText: "end"}).first().hover();
  const column = 3 + words.length + 3;
  assert.match(await page.textContent("#status"),
               new RegExp(`copied from long\\.tl:2:${column}$`));
  const left = async (row, text) => {
    await page.$eval("#output", element => { element.scrollLeft = 0; });
    return page.$$eval("#output .row .text", (rows, [index, word]) => {
      const range = document.createRange();
      const walker = document.createTreeWalker(rows[index], NodeFilter.SHOW_TEXT);
      for (let node = walker.nextNode(); node; node = walker.nextNode()) {
        const at = node.data.indexOf(word);
        if (at >= 0) {
          range.setStart(node, at);
          range.setEnd(node, at + 1);
          return range.getBoundingClientRect().left;
        }
      }
      return -1;
    }, [row, text]);
  };
  assert.strictEqual(await left(2, "b"), await left(3, "c"));
  const width = (await left(3, "c") - await left(2, "a")) / 4;
  assert.ok(width > 7 && width < 9, `a column is ${width} wide`);
  await page.screenshot({path: "long.png"});
  assert.deepStrictEqual(page.faults, []);
}

/// On a narrow screen the panel reads downwards.
async function testNarrow(browser, url) {
  const page = await open(browser, url, {viewport: {width: 420, height: 800}});
  await piece(page, "output", "42").click();
  const panel = await page.$eval("#details", ({scrollWidth, clientWidth, scrollHeight}) =>
    ({scrollWidth, clientWidth, scrollHeight}));
  assert.ok(panel.scrollWidth <= panel.clientWidth, JSON.stringify(panel));
  assert.strictEqual(await page.evaluate(() => document.documentElement.scrollWidth), 420);
  await page.screenshot({path: "narrow.png"});
  assert.deepStrictEqual(page.faults, []);
}

/// docs/explain.png is the picture that this takes.
async function testExample(browser) {
  const url = explain("example.html", {"shapes.tl": fs.readFileSync(EXAMPLE)}, "shapes.tl");
  const page = await open(browser, url, {viewport: {width: 1240, height: 720}});
  await page.locator("#sources .piece", {hasText: "visit"}).nth(1).click();
  assert.ok(await page.locator("#output .pin").count() > 1);
  await piece(page, "sources", "flag").hover();
  assert.strictEqual(await page.locator("#output .hit").count(), 3);
  await page.screenshot({path: "example.png"});
  assert.deepStrictEqual(page.faults, []);
}

async function testChains(browser) {
  const url = explain("small.html", SMALL, "main.tl");
  execFileSync(tool, ["-o", "out.c", "--map", "out.map", "main.tl"]);
  const map = JSON.parse(fs.readFileSync("out.map", "utf8"));
  const text = fs.readFileSync("main.tl", "utf8");
  const at = name => ({source: 0, in: Buffer.byteLength(text.slice(0, text.indexOf(name))),
                       inSize: name.length});
  map.chains = [{kind: "loop", name: "@for", ...at("@for"), round: 2, parent: null},
                {kind: "macro", name: "pair", ...at("pair"), parent: 0}];
  for (const one of map.pieces)
    if (one.source === 1)
      one.chain = 1;
  fs.writeFileSync("chains.map", JSON.stringify(map));
  const page = await open(browser, explain("chains.html", {}, "--from-map", "chains.map"));
  await piece(page, "output", "42").click();
  const details = await page.textContent("#details");
  assert.match(details, /lib\.tl:4:18 calculated/);
  assert.match(details, /main\.tl:5:5 in expansion of macro 'pair'/);
  assert.match(details, /main\.tl:6:5 in round 2 of the loop/);
  await piece(page, "sources", "pair").hover();
  assert.match(await texts(page, "#output .hit"), /int.*=.*42/s);
  await page.locator("#details button", {hasText: "main.tl:5:5"}).click();
  assert.ok((await texts(page, "#sources .current")).includes("pair"));
  await page.screenshot({path: "chains.png"});
  assert.deepStrictEqual(page.faults, []);
  return url;
}

(async () => {
  const browser = await chromium.launch({executablePath, args: ["--no-sandbox"]});
  try {
    const url = await testChains(browser);
    for (const colorScheme of ["light", "dark"]) {
      const page = await open(browser, url, {colorScheme});
      await testPointing(page);
      await testPinning(page);
      await testKeyboard(page);
      await testKinds(page);
      await piece(page, "output", "beta").click();
      await piece(page, "output", "42").hover();
      await page.screenshot({path: `${colorScheme}.png`});
      assert.deepStrictEqual(page.faults, []);
    }
    for (const colorScheme of ["light", "dark"])
      await testRows(browser, colorScheme);
    await testNarrow(browser, url);
    await testLongLines(browser);
    const empty = await open(browser, explain("empty.html", {"empty.tl": ""}, "empty.tl"));
    await empty.locator("#output").focus();
    await empty.keyboard.press("ArrowDown");
    assert.deepStrictEqual(empty.faults, []);
    await testExample(browser);
    await testLarge(browser);
    console.log("the page does what it should");
  } finally {
    await browser.close();
  }
})();
