#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The Bazel rules in Bazel's sandbox: what they make, what is made again, and that a text sees only its deps.

    try_bazel.py --tool TLEXPAND
"""
import argparse
import pathlib
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import bazel
import generate

FILES, LIBRARIES = 12, 3

MORE = '''
tl_library(name = "inner", srcs = ["inner/lib/x.tl"], import_paths = ["inner/lib"])
tl_expand(
    name = "options",
    src = "options.tl",
    out = "options.txt",
    map = "options.map",
    source_map = "options.txt.map",
    trace = "options.trace",
    defines = {"A": "one two", "B": "3"},
    deps = [":inner"],
    options = ["--keep-imports"],
)
tl_library(name = "own", srcs = ["own/y.tl"])
tl_expand(
    name = "rows",
    src = "rows.tl",
    out = "rows.txt",
    lists = {"data/parts.csv": "parts:part,price", "data/names.json": "names"},
    import_paths = ["own"],
    deps = [":own"],
)
'''
ROWS = {
    "rows.tl": '@import "y.tl"\n@for((p, c) in parts){own(p) c }@for((n, k) in names){n k }',
    "own/y.tl": "@def own(x) = {<x>}\n",
    "data/parts.csv": "price,part\n3,bolt\n5,nut\n",
    "data/names.json": '[{"n": "ann", "k": 1}, {"n": "bob", "k": 2}]\n',
}
REFUSED = {
    "-ox": "'-ox' names an output; leave it out, and name it with the attribute out",
    "--source-map=x": "'--source-map=x' names an output; leave it out, and name it with the attribute source_map",
    "--depfile": "'--depfile' is of no use here; leave it out",
}
FORGOTTEN = 'tl_expand(name = "forgotten", src = "src/f0.txt.tl", out = "forgotten.txt")\n'


def check(what, wanted, got, log=""):
    if wanted != got:
        raise SystemExit(f"{what}: wanted {wanted}, got {got}\n{log}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--tool", required=True)
    tool = parser.parse_args().tool
    with tempfile.TemporaryDirectory() as temporary:
        root, base = pathlib.Path(temporary) / "workspace", pathlib.Path(temporary) / "base"
        bazel.write_workspace(root, tool, FILES, LIBRARIES)
        with (root / "BUILD.bazel").open("a") as file:
            file.write(MORE)
        (root / "inner" / "lib").mkdir(parents=True)
        (root / "inner" / "lib" / "x.tl").write_text("@def x = {inner}\n")
        (root / "options.tl").write_text('@import "x.tl"\n_A_ _B_ x\n')
        for name, text in ROWS.items():
            (root / name).parent.mkdir(exist_ok=True)
            (root / name).write_text(text)
        done, ran, _ = bazel.build(root, base)
        check("the first build", (0, FILES + 2), (done.returncode, ran), done.stderr)
        for n in range(FILES):
            check(f"file {n}", generate.expected(n, LIBRARIES),
                  (root / "bazel-bin" / "out" / f"f{n}.txt").read_text())
        check("options", '@import "x.tl"\none two 3 inner\n', (root / "bazel-bin" / "options.txt").read_text())
        if not (root / "bazel-bin" / "options.map").read_text().startswith('{"version":1'):
            raise SystemExit("the map is none")
        if '"version":3' not in (root / "bazel-bin" / "options.txt.map").read_text():
            raise SystemExit("the source map is none")
        if "import x.tl" not in (root / "bazel-bin" / "options.trace").read_text():
            raise SystemExit("the trace is none")

        check("rows", "<bolt> 3 <nut> 5 ann 1 bob 2 ", (root / "bazel-bin" / "rows.txt").read_text())

        rows = root / "data" / "parts.csv"
        rows.write_text(rows.read_text().replace("bolt", "screw"))
        done, ran, _ = bazel.build(root, base)
        check("rows changed", (0, 1), (done.returncode, ran), done.stderr)
        check("their text", "<screw> 3 <nut> 5 ann 1 bob 2 ", (root / "bazel-bin" / "rows.txt").read_text())

        library = root / "lib1.tl"
        library.write_text(library.read_text().replace("library 1", "library one"))
        done, ran, _ = bazel.build(root, base)
        check("an import changed", (0, FILES // LIBRARIES), (done.returncode, ran), done.stderr)
        check("its text", True, "library one" in (root / "bazel-bin" / "out" / "f1.txt").read_text())

        for option, said in REFUSED.items():
            (root / "refused").mkdir(exist_ok=True)
            (root / "refused" / "BUILD.bazel").write_text(
                'load("//build_rules/bazel:tl.bzl", "tl_expand")\n'
                f'tl_expand(name = "refused", src = "x.tl", out = "x.txt", options = ["{option}"])\n')
            (root / "refused" / "x.tl").touch()
            done, _, _ = bazel.build(root, base, "//refused:all")
            check(option, (1, True), (done.returncode, said in done.stderr), done.stderr)
        with (root / "BUILD.bazel").open("a") as file:
            file.write(FORGOTTEN)
        done, _, _ = bazel.build(root, base)
        check("a forgotten dependency", (1, True),
              (done.returncode, "Can't import file: lib0.tl" in done.stderr), done.stderr)
        bazel.remove(base)
    print("the Bazel rules: right")


main()
