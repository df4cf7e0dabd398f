# SPDX-License-Identifier: MIT
"""Generates the trees of texts that the tests and scripts/scale expand: FILES texts, each of which
imports one of IMPORTS libraries, and all of them a common one through those."""
import pathlib


def library_of(number, libraries):
    return number % libraries


def write_tree(root, files, libraries):
    """Writes common.tl, lib<i>.tl and src/f<n>.txt.tl below `root`."""
    root = pathlib.Path(root)
    (root / "src").mkdir(parents=True, exist_ok=True)
    (root / "common.tl").write_text("@def common(x) = {<x>}\n")
    for i in range(libraries):
        (root / f"lib{i}.tl").write_text(
            '@import "common.tl"\n'
            f"@def wrap(x) = {{library {i}: common(x)}}\n")
    for n in range(files):
        (root / "src" / f"f{n}.txt.tl").write_text(
            f'@import "lib{library_of(n, libraries)}.tl"\n'
            f"@for(row in [a, b, c])\n{{\n    wrap(f{n} row)\n\n}}\n")


def expected(number, libraries):
    """What the expansion of a file must be."""
    lib = library_of(number, libraries)
    return "".join(f"library {lib}: <f{number} {row}>\n" for row in "abc") + "\n"
