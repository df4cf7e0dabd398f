// SPDX-License-Identifier: MIT
// The search, the choice of light or dark, and the menu of small windows. `searchIndex`, from
// search-index.js, has a row [page, address, heading, text] for each section of each page. All of it
// works from disk: nothing is loaded but scripts.
"use strict";

function words(query) {
    return query.toLowerCase().split(/\s+/).filter((word) => word !== "");
}

// How well a row fits: every word must occur; the beginning of a heading counts most.
function score(row, wanted) {
    const heading = row[2].toLowerCase();
    const text = row[3].toLowerCase();
    let sum = 0;
    for (const word of wanted) {
        const inHeading = heading.indexOf(word);
        const inText = text.indexOf(word);
        if (inHeading < 0 && inText < 0) return 0;
        if (heading === word) sum += 60;
        if (inHeading >= 0) sum += inHeading === 0 || /\W/.test(heading[inHeading - 1]) ? 30 : 15;
        if (inText >= 0) sum += 2 + Math.min(text.split(word).length - 1, 5);
    }
    if (wanted.length > 1 && (heading + "\n" + text).includes(wanted.join(" "))) sum += 25;
    return sum;
}

function search(index, query, limit) {
    const wanted = words(query);
    if (wanted.length === 0) return [];
    return index
        .map((row) => ({ row, points: score(row, wanted) }))
        .filter((hit) => hit.points > 0)
        .sort((a, b) => b.points - a.points)
        .slice(0, limit)
        .map((hit) => hit.row);
}

function excerpt(text, wanted) {
    const place = Math.max(0, ...wanted.map((word) => text.toLowerCase().indexOf(word)));
    const begin = Math.max(0, place - 40);
    return (begin > 0 ? "…" : "") + text.slice(begin, begin + 140) + "…";
}

// The text with the words marked, as nodes: nothing of it is ever read as HTML.
function marked(text, wanted) {
    const parts = document.createDocumentFragment();
    const escaped = wanted.map((word) => word.replace(/[.*+?^${}()|[\]\\]/g, "\\$&"));
    for (const piece of text.split(new RegExp(`(${escaped.join("|")})`, "i"))) {
        const isWord = wanted.includes(piece.toLowerCase());
        const node = isWord ? document.createElement("mark") : document.createTextNode(piece);
        if (isWord) node.textContent = piece;
        parts.append(node);
    }
    return parts;
}

function show(list, query) {
    const wanted = words(query);
    const rows = search(searchIndex, query, 12);
    list.replaceChildren();
    list.hidden = wanted.length === 0;
    for (const [page, address, heading, text] of rows) {
        const link = document.createElement("a");
        link.href = address;
        const where = document.createElement("span");
        where.className = "where";
        where.textContent = " · " + page;
        const part = document.createElement("span");
        part.className = "excerpt";
        part.append(marked(excerpt(text, wanted), wanted));
        link.append(marked(heading, wanted), where, part);
        const item = document.createElement("li");
        item.append(link);
        list.append(item);
    }
    if (rows.length === 0) list.append("Nothing found.");
}

function prepareSearch() {
    const query = document.getElementById("query");
    const list = document.getElementById("results");
    let chosen = -1;
    const choose = (step) => {
        const links = [...list.querySelectorAll("a")];
        if (links.length === 0) return;
        chosen = (chosen + step + links.length) % links.length;
        links.forEach((link, i) => link.classList.toggle("chosen", i === chosen));
        links[chosen].scrollIntoView({ block: "nearest" });
    };
    query.addEventListener("input", () => { chosen = -1; show(list, query.value); });
    query.addEventListener("keydown", (event) => {
        if (event.key === "ArrowDown") choose(1);
        else if (event.key === "ArrowUp") choose(-1);
        else if (event.key === "Escape") { query.value = ""; show(list, ""); query.blur(); }
        else if (event.key === "Enter") {
            const link = list.querySelectorAll("a")[Math.max(chosen, 0)];
            if (link) { location.href = link.href; list.hidden = true; }
        } else return;
        event.preventDefault();
    });
    document.addEventListener("keydown", (event) => {
        if (event.key === "/" && document.activeElement !== query) {
            event.preventDefault();
            query.focus();
        }
    });
    document.addEventListener("click", (event) => {
        if (!event.target.closest("form")) list.hidden = true;
    });
    const asked = new URLSearchParams(location.search).get("q");
    if (asked) { query.value = asked; show(list, asked); }
}

function prepareTheme() {
    document.getElementById("theme").addEventListener("click", () => {
        const root = document.documentElement;
        const isDark = root.dataset.theme
            ? root.dataset.theme === "dark"
            : matchMedia("(prefers-color-scheme: dark)").matches;
        root.dataset.theme = isDark ? "light" : "dark";
        try { localStorage.setItem("theme", root.dataset.theme); } catch (e) { /* from disk */ }
    });
}

function prepareMenu() {
    const menu = document.getElementById("menu");
    menu.addEventListener("click", () => {
        const isOpen = document.getElementById("pages").classList.toggle("open");
        menu.setAttribute("aria-expanded", isOpen);
    });
}

if (typeof document !== "undefined") {
    prepareSearch();
    prepareTheme();
    prepareMenu();
}
if (typeof module !== "undefined") module.exports = { search };
