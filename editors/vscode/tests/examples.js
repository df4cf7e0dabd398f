// SPDX-License-Identifier: MIT
// Reads texts with the grammar and checks what must hold for each of them: at the end nothing is
// left open, every directive outside of strings and comments is shown as one, and nothing else is.
//
//     node examples.js MODULES TABLE FILE...     MODULES: a node_modules with vscode-textmate;
//                                                TABLE: the expander's table of directives
const fs = require("fs");
const path = require("path");

const [modules, table, ...files] = process.argv.slice(2);
const textmate = require(path.join(modules, "vscode-textmate"));
const oniguruma = require(path.join(modules, "vscode-oniguruma"));
const grammarFile = path.join(__dirname, "..", "syntaxes", "tl.tmLanguage.json");
const wasm = path.join(modules, "vscode-oniguruma", "release", "onig.wasm");

const words = [...fs.readFileSync(table, "utf8").matchAll(/^ {4}\{"(\w+)",/gm)].map((m) => m[1]);
words.push("elseif");

async function loadGrammar() {
    await oniguruma.loadWASM(fs.readFileSync(wasm).buffer);
    const registry = new textmate.Registry({
        onigLib: Promise.resolve({
            createOnigScanner: (patterns) => new oniguruma.OnigScanner(patterns),
            createOnigString: (text) => new oniguruma.OnigString(text),
        }),
        loadGrammar: async () =>
            textmate.parseRawGrammar(fs.readFileSync(grammarFile, "utf8"), grammarFile),
    });
    return registry.loadGrammar("source.tl");
}

function checkLine(line, tokens, where, faults) {
    for (const match of line.matchAll(/@(\w+)/g)) {
        const token = tokens.find((t) => t.startIndex <= match.index && match.index < t.endIndex);
        const scopes = token.scopes.join(" ");
        if (/comment|string/.test(scopes)) continue;
        const isShown = /keyword\.(control|operator\.paste)/.test(scopes);
        if (isShown !== (words.includes(match[1]) || line[match.index - 1] === "@"))
            faults.push(`${where}: ${match[0]}: ${scopes}`);
    }
}

function checkFile(grammar, file, faults) {
    let stack = textmate.INITIAL;
    fs.readFileSync(file, "utf8").split("\n").forEach((line, index) => {
        const result = grammar.tokenizeLine(line, stack);
        stack = result.ruleStack;
        checkLine(line, result.tokens, `${file}(${index + 1})`, faults);
    });
    if (stack.depth !== 1) faults.push(`${file}: something is left open at the end`);
}

async function main() {
    const faults = [];
    const grammar = await loadGrammar();
    if (words.length < 20) faults.push(`${table}: no directives are found`);
    for (const word of words) {
        const tokens = grammar.tokenizeLine(`@${word} x`, textmate.INITIAL).tokens;
        checkLine(`@${word} x`, tokens, `@${word}`, faults);
    }
    files.forEach((file) => checkFile(grammar, file, faults));
    faults.forEach((fault) => console.error(fault));
    console.log(`${words.length} directives, ${files.length} texts, ${faults.length} faults`);
    process.exitCode = faults.length === 0 ? 0 : 1;
}

main();
