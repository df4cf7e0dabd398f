// SPDX-License-Identifier: MIT
// Source maps, read by the library that the tools of JavaScript use: at every piece of the output the
// library must find the source that the tool's own map names (of an element of a list, the one that it
// was copied from), and the other way round.
"use strict";

const assert = require("node:assert");
const {execFileSync} = require("node:child_process");
const fs = require("node:fs");
const os = require("node:os");
const path = require("node:path");
const {SourceMapConsumer} = require("source-map");

const [tool] = process.argv.slice(2);
const folder = fs.mkdtempSync(path.join(os.tmpdir(), "source-map-"));
process.chdir(folder);

/// Lines and columns of offsets of bytes, as the standard counts them.
class Positions {
  constructor(file) {
    this.bytes = fs.readFileSync(file);
    this.starts = [0];
    for (let i = 0; i < this.bytes.length; ++i)
      if (this.bytes[i] === 10)
        this.starts.push(i + 1);
  }
  at(offset) {
    let low = 0;
    let high = this.starts.length;
    while (high - low > 1) {
      const middle = (low + high) >> 1;
      if (this.starts[middle] <= offset)
        low = middle;
      else
        high = middle;
    }
    const column = this.bytes.toString("utf8", this.starts[low], offset).length;
    return {line: low + 1, column};
  }
}

async function check(name, files, most) {
  for (const [file, text] of Object.entries(files))
    fs.writeFileSync(file, text);
  const begin = Date.now();
  execFileSync(tool, ["-o", "out.js", "--map", "out.map", "--chains", "--source-map", "out.js.map",
                      "--source-map-contents", "main.tl"]);
  const seconds = (Date.now() - begin) / 1000;
  const map = JSON.parse(fs.readFileSync("out.map", "utf8"));
  const output = new Positions("out.js");
  const sources = map.sources.map(source => new Positions(source));
  const ways = new Map();
  let checked = 0;
  await SourceMapConsumer.with(fs.readFileSync("out.js.map", "utf8"), null, consumer => {
    assert.deepStrictEqual(consumer.sources, map.sources);
    for (const source of map.sources)
      assert.strictEqual(consumer.sourceContentFor(source), fs.readFileSync(source, "utf8"));
    const step = Math.max(1, Math.floor(map.pieces.length / most));
    for (let i = 0; i < map.pieces.length; i += step) {
      const piece = map.pieces[i];
      const range = piece.source === null ? piece.copied ?? piece.from : piece;
      const here = output.at(piece.out);
      const found = consumer.originalPositionFor(here);
      if (!range) {
        assert.strictEqual(found.source, null, `${name}: piece ${i}`);
        continue;
      }
      const wanted = {source: map.sources[range.source], ...sources[range.source].at(range.in)};
      assert.deepStrictEqual({source: found.source, line: found.line, column: found.column},
                             wanted, `${name}: piece ${i}`);
      // The way back leads to this place among others: a macro's body is in many.
      const key = `${wanted.source}:${wanted.line}:${wanted.column}`;
      if (!ways.has(key))
        ways.set(key, new Set(consumer.allGeneratedPositionsFor(wanted)
          .map(at => `${at.line}:${at.column}`)));
      assert.ok(ways.get(key).has(`${here.line}:${here.column}`), `${name}: piece ${i} backwards`);
      ++checked;
    }
  });
  console.log(`${name}: ${map.pieces.length} pieces, ${checked} looked up; ` +
              `expanded in ${seconds} s`);
}

(async () => {
  await check("everything", {
    "lib.tl": "@def pair(a, b) =\n{\n  var a = 'ä😀', ü = b;\n  b;\n}\n",
    "main.tl": "// ä 😀 x\n@import \"lib.tl\"\nlet z = 1; /* 😀 */ let y = @(1 + 2);\n  pair(p, q)\n" +
               "@for(i in [1, zwei]){\n  f(i) // ß i\n}\n@unstr(\"a\\n b\\n c\")\n",
  }, 1e6);
  const lines = 1e5;
  let text = "@def twice(x) = {x x}\n";
  for (let i = 0; i < lines; ++i)
    text += `twice(a${i})\n`;
  await check("100,000 calls on 100,000 lines", {"main.tl": text}, 500);
  let line = "@def twice(x) = {x x}\nvar ä;";
  for (let i = 0; i < lines; ++i)
    line += `twice(ä${i}) `;
  await check("100,000 calls on one line", {"main.tl": line + "\n"}, 300);
  fs.rmSync(folder, {recursive: true});
})();
