# SPDX-License-Identifier: MIT
"""Expands texts in other languages with --lenient; all must come out as they went in.

    check_files.py TOOL LIST FOLDER

LIST names files that packages of Debian install, one a line; those that are not on this machine are
passed over, and so are those that hold an @ here. FOLDER has texts written for this test.
"""
import pathlib
import subprocess
import sys


def expand(tool, text):
    return subprocess.run([tool, "--lenient"], input=text, capture_output=True, timeout=100,
                          check=False)


def installed_files(table):
    for line in table.read_text(encoding="utf-8").splitlines():
        path = pathlib.Path(line)
        if path.is_file():
            text = path.read_bytes()
            if b"@" not in text:
                yield path, text


def main():
    tool, table, folder = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    own = [(path, path.read_bytes()) for path in sorted(folder.iterdir())]
    installed = list(installed_files(table))
    changed = 0
    for path, text in own + installed:
        run = expand(tool, text)
        if run.returncode == 0 and run.stdout == text and run.stderr == b"":
            continue
        changed += 1
        print(f"{path}: exit status {run.returncode}\n{run.stderr.decode(errors='replace')}")
    print(f"{len(own)} own and {len(installed)} installed texts, {changed} changed")
    return 1 if changed or not own else 0


if __name__ == "__main__":
    sys.exit(main())
