// SPDX-License-Identifier: MIT
// Texts, rows and pieces. All offsets are those of JavaScript strings.
"use strict";

const KINDS = ["copied", "calculated", "indentation", "made"];
// A line can be the whole text, and a row has all its elements.
const LONGEST_ROW = 2000;
const UTF8 = new TextEncoder();

/// The last index of the sorted array whose value is at most `value`; -1 when there is none.
function lastAtMost(sorted, value) {
  let low = 0;
  let high = sorted.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (sorted[middle] <= value)
      low = middle + 1;
    else
      high = middle;
  }
  return low - 1;
}

/// The pieces of the output. Each has a stretch of output and, when `source` is not -1, a range of a
/// source, which begins at `base` + `in` in the text of all sources.
class Pieces {
  constructor(numbers, bases, chains) {
    const width = 6;
    this.count = numbers.length / width;
    this.starts = new Array(this.count);
    this.fields = numbers;
    this.bases = bases;
    this.chains = chains;
    this.stepsAt = new Map();
    chains.forEach(({source, at}, i) => {
      if (source < 0)
        return;
      const place = bases[source] + at;
      if (!this.stepsAt.has(place))
        this.stepsAt.set(place, []);
      this.stepsAt.get(place).push(i);
    });
    let start = 0;
    for (let i = 0; i < this.count; ++i) {
      this.starts[i] = start;
      start += numbers[i * width];
    }
    this.size = start;
    this.bySource = this.sortBySource();
  }

  get(i) {
    const f = this.fields;
    const [size, kind, source, at, inSize, chain] = f.slice(i * 6, i * 6 + 6);
    const from = source < 0 ? -1 : this.bases[source] + at;
    return {index: i, start: this.starts[i], end: this.starts[i] + size, kind: KINDS[kind], source,
            at, from, to: from < 0 ? -1 : from + inSize, chain};
  }

  at(offset) { return this.get(lastAtMost(this.starts, offset)); }

  /// Pieces in the order of their sources, with the farthest end up to each one.
  sortBySource() {
    const order = [];
    for (let i = 0; i < this.count; ++i)
      if (this.fields[i * 6 + 2] >= 0)
        order.push(i);
    const from = i => this.bases[this.fields[i * 6 + 2]] + this.fields[i * 6 + 3];
    order.sort((a, b) => from(a) - from(b) || a - b);
    const begins = order.map(from);
    const farthest = [];
    order.forEach((piece, i) => {
      const end = begins[i] + this.fields[piece * 6 + 4];
      farthest.push(i === 0 ? end : Math.max(end, farthest[i - 1]));
    });
    return {order, begins, farthest};
  }

  /// Whether pieces came through the step at this place of the sources.
  isStep(at) { return this.stepsAt.has(at); }

  /// The pieces that came through the call or loop whose name or sign is at this place.
  comingThrough(at) {
    const steps = new Set(this.stepsAt.get(at) ?? []);
    if (steps.size === 0)
      return [];
    const inside = new Uint8Array(this.chains.length);
    this.chains.forEach(({parent}, i) => {
      inside[i] = steps.has(i) || (parent >= 0 && inside[parent]) ? 1 : 0;
    });
    const found = [];
    for (let i = 0; i < this.count; ++i)
      if (inside[this.fields[i * 6 + 5]])
        found.push(this.get(i));
    return found;
  }

  /// The pieces that come from [begin, end) of the sources, in the order of output.
  comingFrom(begin, end) {
    const {order, begins, farthest} = this.bySource;
    const found = [];
    for (let i = lastAtMost(begins, end - 1); i >= 0 && farthest[i] > begin; --i) {
      const piece = this.get(order[i]);
      if (piece.to > begin)
        found.push(piece);
    }
    return found.sort((a, b) => a.start - b.start);
  }
}

/// A text cut into rows: lines, long ones in several, and a heading for each of several files.
class TextRows {
  constructor(texts, headings) {
    this.text = texts.join("");
    this.rows = [];
    this.bases = [];
    let base = 0;
    texts.forEach((text, i) => {
      this.bases.push(base);
      if (headings)
        this.rows.push({file: i, start: base, end: base, line: 0});
      this.addLines(i, base, base + text.length);
      base += text.length;
    });
    this.starts = this.rows.map(row => row.start);
  }

  addLines(file, begin, end) {
    let line = 1;
    for (let start = begin; start < end; ++line) {
      const feed = this.text.indexOf("\n", start);
      const next = feed < 0 || feed >= end ? end : feed + 1;
      for (let row = start; row < next;) {
        const rowEnd = this.endOfRow(row, next);
        this.rows.push({file, start: row, end: rowEnd, line: row === start ? line : 0});
        row = rowEnd;
      }
      start = next;
    }
  }

  /// No character of two units is cut.
  endOfRow(begin, next) {
    const end = begin + LONGEST_ROW;
    if (end >= next)
      return next;
    return /[\ud800-\udbff]/.test(this.text[end - 1]) ? end - 1 : end;
  }

  rowAt(offset) { return lastAtMost(this.starts, offset); }

  /// "NAME:LINE:COLUMN" of an offset; the column counts bytes from 1, as it does in messages.
  place(offset, names) {
    let row = this.rowAt(offset);
    while (row > 0 && this.rows[row].line === 0)
      --row;
    const found = this.rows[row];
    const before = UTF8.encode(this.text.slice(found.start, offset)).length;
    return `${names[found.file]}:${found.line}:${before + 1}`;
  }
}
