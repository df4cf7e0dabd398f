// SPDX-License-Identifier: MIT
// Connects the two panes: what is pointed at, what is kept, and what the panel says about it.
"use strict";

(() => {
  const MOST_LINKS = 200;
  const data = JSON.parse(document.getElementById("data").textContent);
  const names = data.sources.map(source => source.name);
  const sourceRows = new TextRows(data.sources.map(source => source.text ?? ""), true);
  const outputRows = new TextRows([data.output.text], false);
  const pieces = new Pieces(data.pieces, sourceRows.bases, data.chains);
  const status = document.getElementById("status");
  const details = document.getElementById("details");
  document.getElementById("output-name").textContent = data.output.name;

  const sources = new Pane(document.getElementById("sources"), sourceRows, names,
    boundariesOfSources(), start =>
      pieces.isStep(start) || pieces.comingFrom(start, start + 1).length > 0 ? "piece" : "unused");
  const output = new Pane(document.getElementById("output"), outputRows, [data.output.name],
    pieces.starts, start => {
      const {kind, source} = pieces.at(start);
      return kind === "indentation" || source < 0 ? kind : `piece ${kind}`;
    });

  let pinned = null;
  let pointed = null;

  function boundariesOfSources() {
    const cuts = new Set([0]);
    for (let i = 0; i < pieces.count; ++i) {
      const {from, to} = pieces.get(i);
      if (from >= 0)
        cuts.add(from).add(to);
    }
    for (const {source, at, size} of data.chains)
      if (source >= 0)
        cuts.add(sourceRows.bases[source] + at).add(sourceRows.bases[source] + at + size);
    return [...cuts].sort((a, b) => a - b);
  }

  /// What belongs to a place of a side: pieces, and the ranges to mark on both sides.
  function select(pane, offset) {
    if (pane === output) {
      const piece = pieces.at(offset);
      return {pane, offset, list: [piece], output: [[piece.start, piece.end]],
              sources: piece.from < 0 ? [] : [[piece.from, piece.to]]};
    }
    const index = lastAtMost(sources.cut, offset);
    const begin = sources.cut[index];
    const end = sources.cut[index + 1] ?? sourceRows.text.length;
    const through = pieces.comingThrough(begin);
    const list = joinNeighbours(through.length ? through : pieces.comingFrom(begin, end));
    return {pane, offset, list, sources: list.length ? [[begin, end]] : [],
            output: list.map(piece => [piece.start, piece.end])};
  }

  /// Pieces that follow each other become one.
  function joinNeighbours(list) {
    const joined = [];
    for (const piece of list) {
      const last = joined[joined.length - 1];
      if (last && last.end === piece.start)
        Object.assign(last, {end: piece.end, kind: "through this"});
      else
        joined.push({...piece});
    }
    return joined;
  }

  function mark() {
    for (const [pane, side] of [[output, "output"], [sources, "sources"]])
      pane.setMarks(pointed ? pointed[side] : [], pinned ? pinned[side] : []);
  }

  const describePiece = piece =>
    piece.from < 0 ? "indentation that was added" :
    `${piece.kind === "made" ? "made while expanding" : piece.kind} ` +
    `${piece.kind === "copied" ? "from" : "by"} ${sourceRows.place(piece.from, names)}`;

  function describe(selection) {
    if (selection.list.length === 0)
      return `${sourceRows.place(selection.offset, names)}: nothing of the output comes from here`;
    if (selection.pane === output)
      return `${outputRows.place(selection.offset, [data.output.name])}: ` +
             describePiece(selection.list[0]);
    const count = selection.list.length;
    return `${sourceRows.place(selection.offset, names)}: ${count} ` +
           `${count === 1 ? "place" : "places"} of the output`;
  }

  function point(pane, offset) {
    if (pointed && pointed.pane === pane && pointed.offset === offset)
      return;
    pointed = offset === null ? null : select(pane, offset);
    if (pointed)
      status.textContent = describe(pointed);
    mark();
  }

  function pin(pane, offset) {
    pinned = select(pane, offset);
    pane.current = offset;
    status.textContent = describe(pinned);
    showDetails();
    mark();
    const first = pinned.list[0];
    if (!first)
      return;
    if (pane === output && first.from >= 0)
      sources.reveal(first.from);
    else if (pane === sources)
      output.reveal(first.start);
  }

  function letGo() {
    pinned = pointed = null;
    sources.current = output.current = null;
    showHint();
    mark();
  }

  function link(text, pane, offset) {
    const button = document.createElement("button");
    button.type = "button";
    button.textContent = text;
    button.addEventListener("click", () => {
      pane.current = offset;
      pane.reveal(offset);
      pane.element.focus({preventScroll: true});
    });
    return button;
  }

  function item(list, ...content) {
    const element = document.createElement("li");
    element.append(...content);
    list.append(element);
  }

  function showDetails() {
    const list = document.createElement("ol");
    const isOutput = pinned.pane === output;
    for (const piece of pinned.list.slice(0, MOST_LINKS))
      if (!isOutput)
        item(list, link(outputRows.place(piece.start, [data.output.name]), output, piece.start),
             ` ${piece.kind}`);
      else if (piece.from >= 0)
        item(list, link(sourceRows.place(piece.from, names), sources, piece.from),
             ` ${piece.kind}`);
    if (isOutput)
      showChain(list, pinned.list[0].chain);
    if (pinned.list.length > MOST_LINKS)
      item(list, `… ${pinned.list.length - MOST_LINKS} more`);
    if (list.children.length === 0)
      item(list, describe(pinned));
    details.replaceChildren(list);
    details.scrollTop = 0;
  }

  function showHint() {
    const hint = document.createElement("p");
    hint.textContent = "Point at a text to see what belongs to it; click to keep it here, with links.";
    details.replaceChildren(hint);
    status.textContent = "\u00a0";
  }

  function showChain(list, chain) {
    for (; chain >= 0; chain = data.chains[chain].parent) {
      const step = data.chains[chain];
      if (step.source < 0)
        item(list, step.text);
      else {
        const offset = sourceRows.bases[step.source] + step.at;
        item(list, link(sourceRows.place(offset, names), sources, offset), ` ${step.text}`);
      }
    }
  }

  function move(pane, key) {
    const offset = pane.neighbour(key);
    if (offset === null)
      return;
    pane.current = offset;
    pane.reveal(offset);
    point(pane, offset);
    const first = pointed.list[0];
    if (first && pane === output && first.from >= 0)
      sources.reveal(first.from);
    else if (first && pane === sources)
      output.reveal(first.start);
  }

  function connect(pane) {
    const offsetOf = event => {
      const segment = event.target.closest?.("[data-start]");
      return segment ? Number(segment.dataset.start) : null;
    };
    pane.element.addEventListener("mouseover", event => point(pane, offsetOf(event)));
    pane.element.addEventListener("mouseleave", () => point(pane, null));
    pane.element.addEventListener("click", event => {
      const offset = offsetOf(event);
      if (offset !== null)
        pin(pane, offset);
    });
    pane.element.addEventListener("focus", () => {
      if (pane.current === null && pane.element.matches(":focus-visible"))
        move(pane, "Home");
    });
    pane.element.addEventListener("keydown", event => {
      const keys = ["ArrowLeft", "ArrowRight", "ArrowUp", "ArrowDown", "PageUp", "PageDown",
                    "Home", "End"];
      if (keys.includes(event.key) && !event.altKey && !event.metaKey)
        move(pane, event.key);
      else if ((event.key === "Enter" || event.key === " ") && pane.current !== null)
        pin(pane, pane.current);
      else
        return;
      event.preventDefault();
    });
  }

  function showFiles() {
    const files = document.getElementById("files");
    sourceRows.rows.forEach((row, index) => {
      if (row.line !== 0 || row.start !== row.end)
        return;
      const button = document.createElement("button");
      button.type = "button";
      button.textContent = names[row.file];
      button.addEventListener("click", () => {
        sources.element.scrollTop = index * ROW_HEIGHT / sources.scale;
      });
      files.append(button);
    });
  }

  connect(sources);
  connect(output);
  document.addEventListener("keydown", event => {
    if (event.key === "Escape")
      letGo();
  });
  showFiles();
  showHint();
})();
