// SPDX-License-Identifier: MIT
// Renders a template to standard output: render.cjs MODULES ENGINE TEMPLATE DATA (JSON, may be missing).
// Nothing is escaped; the template sees the data as `it` (Nunjucks: as names of their own).
'use strict';
const fs = require('fs');
const path = require('path');
const [modules, engine, template, dataFile] = process.argv.slice(2);
const load = require('module').createRequire(path.join(modules, 'node_modules', 'x'));
const text = fs.readFileSync(template, 'utf8');
const data = fs.existsSync(dataFile) ? JSON.parse(fs.readFileSync(dataFile, 'utf8')) : {};

const engines = {
  eta() {
    const { Eta } = load('eta');
    return new Eta({ autoEscape: false, autoTrim: false }).renderString(text, data);
  },
  ejs() {
    return load('ejs').render(text, data, { escape: String, _with: false, localsName: 'it' });
  },
  nunjucks() {
    const environment = new (load('nunjucks').Environment)(null, { autoescape: false });
    return environment.renderString(text, data);
  },
};
fs.writeFileSync(1, engines[engine]());
