# SPDX-License-Identifier: MIT
"""The commands that documents only show, outside of the examples that tools/dev/check-docs runs.

    check_commands.py [--run now|long [--build DIR]]

Each must have a row in commands.toml that says how it is executed, and each row must be a command of a
document. A row has `shown`, the command as documents write it, and one of these:

    now     a command that is executed with --run now, in a copy of the tree whose build/release is DIR
    long    the same with --run long, in a copy that builds for itself; rows run in their order there
    script  the script of the tree that executes it, by the line `line`

A command fails when its exit status is not 0 or when it changes a file of the tree that is not in the
row's list `changes` (patterns as in `*.tl`). Without --run only the table is checked.
"""
import argparse
import fnmatch
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import tomllib

ROOT = pathlib.Path(__file__).resolve().parents[2]
TABLE = pathlib.Path(__file__).with_name("commands.toml")
# What makes a piece of code in a sentence, or an indented line, a command.
PROGRAM = re.compile(r"(scripts/|tools/dev/|\.ci/|bench/\w+\.py|build/\w+/(bin|bench)/|tests/\w+/compare-|"
                     r"(cmake|ctest|bazel|meson|make|ninja|git|npm|apt-get|printf|python3) )")
INDENTED = re.compile(PROGRAM.pattern[:-1] + r"|tlexpand )")
NOT_A_COMMAND = re.compile(r"\[OPTIONS\]|^build/\w+/bin$")


def tree_files():
    """The files of the tree, without what builds and tools leave in it."""
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                            cwd=ROOT, capture_output=True, text=True, check=False)
    if listed.returncode == 0:
        names = [pathlib.Path(name) for name in listed.stdout.split("\0") if name]
        return [name for name in names if (ROOT / name).is_file()]
    return [path.relative_to(ROOT) for path in ROOT.rglob("*")
            if path.is_file() and path.relative_to(ROOT).parts[0] not in ("build", ".git")]


def commands_of(text):
    """The commands that a document shows without running them."""
    prose, kind = [], None
    for line in text.splitlines():
        fence = re.match(r" *```(\w*)", line)
        if fence:
            kind = fence[1] if kind is None else None
            prose.append("")
            continue
        if kind == "sh":
            yield line.strip()
        prose.append(line if kind is None else "")
    for before, line in zip(["", *prose], prose):
        if re.match(r"    \S", line) and (not before.strip() or before.startswith("    ")):
            command = re.split(r" {2,}", line.strip())[0]
            if INDENTED.match(command) and not NOT_A_COMMAND.search(command):
                yield command
    flowing = "\n".join(line for line in prose if not line.startswith("    "))
    for code in re.findall(r"`([^`]+)`", flowing):
        command = " ".join(code.split())
        if PROGRAM.match(command) and not NOT_A_COMMAND.search(command):
            yield command


def check_table(rows):
    shown = {}
    for name in tree_files():
        # Texts that tests expand are no documents of this project.
        if name.suffix == ".md" and name.parts[:2] != ("tests", "lenient"):
            for command in commands_of((ROOT / name).read_text()):
                shown.setdefault(command, []).append(str(name))
    faults = [f"{', '.join(places)}: commands.toml does not say what executes: {command}"
              for command, places in shown.items() if command not in {row["shown"] for row in rows}]
    for row in rows:
        if row["shown"] not in shown:
            faults.append(f"commands.toml: in no document: {row['shown']}")
        if sum(key in row for key in ("now", "long", "script")) != 1:
            faults.append(f"commands.toml: 'now', 'long' or 'script' for {row['shown']}")
        if "script" in row:
            lines = [line.strip() for line in (ROOT / row["script"]).read_text().splitlines()]
            if row["line"] not in lines:
                faults.append(f"{row['script']} has no line '{row['line']}' for {row['shown']}")
    return faults


def git(copy, *arguments):
    return subprocess.run(["git", "-C", copy, *arguments], check=True, text=True, capture_output=True).stdout


def changes(copy):
    """The files that differ from what the index holds, which then holds them."""
    lines = git(copy, "status", "--porcelain", "-z", "--untracked-files=all", "--no-renames").split("\0")
    git(copy, "add", "--all")
    git(copy, "-c", "user.name=check", "-c", "user.email=check@localhost", "commit", "-qm", "step", "--allow-empty")
    return [line[3:] for line in lines if line]


def make_copy(copy, way, build):
    """The tree as a repository of its own, with the build of another for commands that are run now."""
    for name in tree_files():
        (copy / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(ROOT / name, copy / name, follow_symlinks=False)
    git(copy, "init", "-q")
    changes(copy)
    (copy / "build").mkdir(exist_ok=True)
    if way == "now":
        (copy / "build" / "release").symlink_to(build)


def run_rows(rows, way, build):
    faults = []
    environment = {**os.environ, "PATH": f"{build / 'bin'}:{os.environ['PATH']}"}
    with tempfile.TemporaryDirectory() as temporary:
        copy = pathlib.Path(temporary) / "tree"
        make_copy(copy, way, build)
        for row in (row for row in rows if way in row):
            print(f"$ {row[way]}", flush=True)
            done = subprocess.run(["bash", "-c", row[way]], cwd=copy, env=environment, text=True,
                                  stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, errors="replace", check=False)
            found = [f"changes {name}" for name in changes(copy)
                     if not any(fnmatch.fnmatch(name, pattern) for pattern in row.get("changes", []))]
            if done.returncode != 0:
                found.append(f"exit status {done.returncode}\n{done.stdout[-3000:]}")
            for fault in found:
                print(fault, flush=True)  # at once: what follows may take an hour
            faults += [f"{row[way]}: {fault}" for fault in found]
    return faults


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--run", choices=["now", "long"], help="execute these rows")
    parser.add_argument("--build", default=ROOT / "build" / "release", type=pathlib.Path,
                        help="the build tree whose tool is used")
    options = parser.parse_args()
    rows = tomllib.loads(TABLE.read_text())["command"]
    faults = check_table(rows)
    if options.run and not faults:
        faults = run_rows(rows, options.run, options.build.resolve())
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
