#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""500 texts through Ninja, two at a time; then one import changes, and exactly the texts that read it are
expanded again.

    try_incremental.py --tool TLEXPAND
"""
import argparse
import os
import pathlib
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import generate

FILES, LIBRARIES = 500, 10


def write_build(root, tool):
    lines = ["rule expand",
             f"  command = {tool} -I . -o $out --depfile $out.d $in",
             "  depfile = $out.d",
             "  deps = gcc"]
    lines += [f"build out/f{n}.txt: expand src/f{n}.txt.tl" for n in range(FILES)]
    (root / "build.ninja").write_text("\n".join(lines) + "\n")


def ninja(root):
    """Builds; the numbers of the files that were expanded."""
    done = subprocess.run(["ninja", "-j2", "-v"], cwd=root, text=True, capture_output=True)
    if done.returncode != 0:
        raise SystemExit(done.stdout + done.stderr)
    return {int(line.split("-o out/f")[1].split(".")[0])
            for line in done.stdout.splitlines() if "-o out/f" in line}


def change(path):
    """Makes a file newer than everything, without waiting for the clock."""
    status = path.stat()
    os.utime(path, ns=(status.st_atime_ns, status.st_mtime_ns + 3_600_000_000_000))


def check(what, wanted, got):
    if wanted != got:
        raise SystemExit(f"{what}: wanted {sorted(wanted)}, expanded {sorted(got)}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--tool", required=True)
    tool = parser.parse_args().tool
    with tempfile.TemporaryDirectory() as temporary:
        root = pathlib.Path(temporary)
        generate.write_tree(root, FILES, LIBRARIES)
        write_build(root, tool)
        check("the first build", set(range(FILES)), ninja(root))
        for n in range(FILES):
            text = (root / "out" / f"f{n}.txt").read_text()
            if text != generate.expected(n, LIBRARIES):
                raise SystemExit(f"file {n} is {text!r}")
        check("nothing changed", set(), ninja(root))
        change(root / "lib3.tl")
        check("an import changed", {n for n in range(FILES) if n % LIBRARIES == 3}, ninja(root))
        # A file that does not compile any more keeps its output, and the others are made.
        source = root / "src" / "f7.txt.tl"
        text = source.read_text()
        source.write_text(text + "@fail(stop)\n")
        change(source)
        done = subprocess.run(["ninja", "-k0"], cwd=root, text=True, capture_output=True)
        if done.returncode == 0 or "src/f7.txt.tl(7) : error : " not in done.stdout:
            raise SystemExit("an error is not reported: " + done.stdout)
        if (root / "out" / "f7.txt").read_text() != generate.expected(7, LIBRARIES):
            raise SystemExit("an error changed an output")
    print(f"{FILES} files: right")


main()
