// SPDX-License-Identifier: MIT
// One text on the screen. Only the rows that can be seen exist.
"use strict";

const ROW_HEIGHT = 20;
const MARGIN_ROWS = 12;
// Browsers cannot make elements of any height; a longer text is squeezed into this.
const TALLEST = 8e6;

class Pane {
  /// `cut` gives the boundaries of the text's segments, sorted; `describe` the classes of a segment.
  constructor(element, rows, names, cut, describe) {
    Object.assign(this, {element, rows, names, cut, describe});
    this.hits = [];
    this.pins = [];
    this.current = null;
    this.shown = new Map();
    this.space = document.createElement("div");
    this.space.className = "space";
    this.height = rows.rows.length * ROW_HEIGHT;
    this.scale = Math.max(1, this.height / TALLEST);
    this.space.style.height = `${this.height / this.scale}px`;
    element.append(this.space);
    if (rows.rows.length === 0)
      this.showEmpty();
    element.addEventListener("scroll", () => this.render());
    new ResizeObserver(() => this.render()).observe(element);
    this.render();
  }

  showEmpty() {
    const note = document.createElement("p");
    note.className = "empty";
    note.textContent = "The text is empty.";
    this.element.append(note);
  }

  render() {
    const top = this.element.scrollTop;
    const first = Math.max(0, Math.floor(top * this.scale / ROW_HEIGHT) - MARGIN_ROWS);
    const count = Math.ceil(this.element.clientHeight / ROW_HEIGHT) + 2 * MARGIN_ROWS;
    const last = Math.min(this.rows.rows.length, first + count);
    for (const [index, row] of this.shown)
      if (index < first || index >= last) {
        row.remove();
        this.shown.delete(index);
      }
    // Where the space is squeezed, rows stand beside the place that is looked at.
    const shift = this.scale === 1 ? 0 : top - top * this.scale;
    for (let i = first; i < last; ++i) {
      let row = this.shown.get(i);
      if (!row) {
        row = this.makeRow(i);
        this.shown.set(i, row);
        this.space.append(row);
      }
      row.style.top = `${i * ROW_HEIGHT + shift}px`;
    }
    this.mark();
  }

  makeRow(index) {
    const row = this.rows.rows[index];
    const element = document.createElement("div");
    element.className = "row";
    if (row.start === row.end && row.line === 0) {
      element.classList.add("file");
      element.textContent = this.names[row.file];
      return element;
    }
    const number = document.createElement("span");
    number.className = "number";
    number.textContent = row.line || "\u21b3"; // The line goes on.
    const text = document.createElement("span");
    text.className = "text";
    element.append(number, text);
    let start = row.start;
    for (let i = lastAtMost(this.cut, start) + 1; start < row.end; ++i) {
      const end = Math.min(i < this.cut.length ? this.cut[i] : row.end, row.end);
      text.append(this.makeSegment(start, end));
      start = end;
    }
    return element;
  }

  makeSegment(start, end) {
    const segment = document.createElement("span");
    segment.className = this.describe(start);
    segment.textContent = this.rows.text.slice(start, end).replace(/\r?\n$/, " ");
    segment.dataset.start = start;
    segment.dataset.end = end;
    return segment;
  }

  /// Shows which ranges belong to what is pointed at and what is kept; both sorted.
  setMarks(hits, pins) {
    this.hits = hits;
    this.pins = pins;
    this.mark();
  }

  mark() {
    for (const row of this.shown.values())
      for (const segment of row.querySelectorAll("[data-start]")) {
        const start = Number(segment.dataset.start);
        const end = Number(segment.dataset.end);
        segment.classList.toggle("hit", overlaps(this.hits, start, end));
        segment.classList.toggle("pin", overlaps(this.pins, start, end));
        const isCurrent = this.current !== null && start <= this.current && this.current < end;
        segment.classList.toggle("current", isCurrent);
      }
  }

  /// Brings a place into view.
  reveal(offset) {
    const row = this.rows.rowAt(offset);
    const top = row * ROW_HEIGHT / this.scale;
    const {scrollTop, clientHeight} = this.element;
    if (top < scrollTop + ROW_HEIGHT || top > scrollTop + clientHeight - 2 * ROW_HEIGHT)
      this.element.scrollTop = top - clientHeight / 3;
    this.render();
    this.revealAcross(this.shown.get(row), offset);
  }

  /// The same to the left and right, where the row goes on; what is in view stays where it is.
  revealAcross(row, offset) {
    const isThere = segment =>
      Number(segment.dataset.start) <= offset && offset < Number(segment.dataset.end);
    const segment = [...row.querySelectorAll("[data-start]")].find(isThere);
    if (!segment)
      return;
    const {scrollLeft, clientWidth} = this.element;
    const gutter = row.firstChild.offsetWidth;
    const left = segment.offsetLeft + segment.offsetParent.offsetLeft;
    const right = left + Math.min(segment.offsetWidth, clientWidth / 2);
    if (left - gutter < scrollLeft || right > scrollLeft + clientWidth)
      this.element.scrollLeft = right <= clientWidth ? 0 : left - clientWidth / 2;
  }

  /// The place after the current one: by segment, or by row.
  neighbour(key) {
    const last = this.rows.text.length - 1;
    if (last < 0)
      return null;
    if (this.current === null)
      return this.rows.rows[Math.max(0, this.rows.rowAt(0))].start;
    const index = lastAtMost(this.cut, this.current);
    const row = this.rows.rowAt(this.current);
    const column = this.current - this.rows.rows[row].start;
    const steps = {
      ArrowRight: () => this.cut[index + 1] ?? this.current,
      ArrowLeft: () => this.cut[index] < this.current ? this.cut[index] : this.cut[index - 1] ?? 0,
      ArrowDown: () => this.inRow(row, 1, column),
      ArrowUp: () => this.inRow(row, -1, column),
      PageDown: () => this.inRow(row, this.pageRows(), column),
      PageUp: () => this.inRow(row, -this.pageRows(), column),
      Home: () => 0,
      End: () => last,
    };
    return Math.min(Math.max(steps[key](), 0), last);
  }

  pageRows() { return Math.max(1, Math.floor(this.element.clientHeight / ROW_HEIGHT) - 2); }

  inRow(row, step, column) {
    const {rows} = this.rows;
    let index = Math.min(Math.max(row + step, 0), rows.length - 1);
    while (rows[index].start === rows[index].end && index + Math.sign(step) in rows)
      index += Math.sign(step);
    return Math.min(rows[index].start + column, Math.max(rows[index].end - 1, rows[index].start));
  }
}

/// Whether one of the sorted ranges meets [start, end).
function overlaps(ranges, start, end) {
  let low = 0;
  let high = ranges.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (ranges[middle][1] <= start)
      low = middle + 1;
    else
      high = middle;
  }
  return low < ranges.length && ranges[low][0] < end;
}
