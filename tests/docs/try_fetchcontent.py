#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Builds the project of docs/build.md as it stands there, with the lines of FetchContent in the place of
find_package: the tool and the library are built with it.

    try_fetchcontent.py SOURCE COMPILER
"""
import importlib.machinery
import importlib.util
import pathlib
import subprocess
import sys
import tempfile

PLACE = "/path/to/tlMacroExpander"
PACKAGE = "find_package(tlMacroExpander 1 REQUIRED)\n"


def read_blocks(source):
    loader = importlib.machinery.SourceFileLoader("check_docs", str(source / "tools" / "dev" / "check-docs"))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("check_docs", loader))
    loader.exec_module(module)
    return module.read_blocks(source / "docs" / "build.md")


def one(found, what):
    if len(found) != 1:
        raise SystemExit(f"docs/build.md: {len(found)} {what}, and not one")
    return found[0]


def write_project(blocks, source, folder):
    """The files of the document up to those of a folder of their own."""
    for block in blocks:
        name = block.attributes.get("file", "")
        if name and (name.startswith("lib/") or "/" not in name):
            path = folder / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(block.text)
    listing = one([b.text for b in blocks if "FetchContent_Declare" in b.text], "listings of FetchContent")
    if PLACE not in listing:
        raise SystemExit(f"the listing does not name {PLACE}")
    lists = folder / "CMakeLists.txt"
    text = lists.read_text()
    one([PACKAGE] * text.count(PACKAGE), "find_package")
    lists.write_text(text.replace(PACKAGE, listing.replace(PLACE, str(source))))


def run(folder, *command):
    done = subprocess.run(command, cwd=folder, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if done.returncode != 0:
        raise SystemExit(f"{' '.join(command)}:\n{done.stdout[-5000:]}")
    return done.stdout


def main():
    source, compiler = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2]
    with tempfile.TemporaryDirectory() as temporary:
        folder = pathlib.Path(temporary)
        write_project(read_blocks(source), source, folder)
        run(folder, "cmake", "-S", ".", "-B", "out", "-G", "Ninja", f"-DCMAKE_CXX_COMPILER={compiler}",
            "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0")
        run(folder, "cmake", "--build", "out")
        printed = run(folder, "out/table")
        if printed != "beta\n":
            raise SystemExit(f"the program prints {printed}")


main()
