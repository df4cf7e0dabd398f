#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Expands the cases of the language twice and compares the bytes of output and map: the second time under
another locale, time zone, directory, umask and home, and with other descriptors and variables. Python is
refused in both: what its code does is its own business.

    try_hermetic.py --tool TLEXPAND
"""
import argparse
import os
import pathlib
import shutil
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
CASES = ROOT / "tests" / "cases"


def make_locale(directory):
    """A Turkish locale, whose letters, numbers and order are others, where the system can make one."""
    name = "tr_TR.UTF-8"
    made = subprocess.run(["localedef", "-i", "tr_TR", "-f", "UTF-8", str(directory / name)],
                          capture_output=True)
    if (directory / name).exists() and made.returncode in (0, 1):
        return {"LOCPATH": str(directory), "LC_ALL": name, "LANGUAGE": "tr"}
    return {"LC_ALL": "C.UTF-8"}


def arguments_of(case):
    """Those that the case gives to the tool, one a line."""
    file = case.with_suffix(".args")
    return file.read_text().split("\n")[:-1] if file.exists() else []


def command_for(tool, case, way):
    """What expands a case; outputs lie at `way`, from the case's folder."""
    given = [f"{way}.map" if argument == "{out}" else argument for argument in arguments_of(case)]
    if case.suffix == ".mpfw":
        return [tool, "project", *given, case.name]
    if given[:1] == ["project"]:
        return [tool, *given, case.name]
    ours = ["-o", way]
    if "--no-python" not in given:
        ours.append("--no-python")
    if "--max-steps" not in given:
        ours += ["--max-steps", "10000"]
    if "--map" not in given:
        ours += ["--map", f"{way}.map"]
    return [tool, *ours, *given, case.name]


def expand_all(tool, cases, out, environment):
    """Runs the tool in the folder of each case; how it ended and what it said, by the name. The outputs are
    named by the way to them, which is the same in both runs and part of the map."""
    ends = {}
    for case in sorted([*cases.rglob("*.tl"), *cases.rglob("*.mpfw")]):
        name = case.relative_to(cases)
        if any(part.endswith(".d") for part in name.parts):
            continue
        target = out / name
        target.parent.mkdir(parents=True, exist_ok=True)
        done = subprocess.run(
            command_for(tool, case, os.path.relpath(target, case.parent)),
            cwd=case.parent, env=environment, capture_output=True, stdin=subprocess.DEVNULL)
        ends[str(name)] = (done.returncode, done.stdout, done.stderr)
    return ends


def refuse_usage_errors(ends, cases):
    """A command line that the tool does not take would test nothing."""
    wrong = [name for name, (status, _, _) in ends.items() if status not in (0, 1)]
    if wrong:
        raise SystemExit("not expanded: " + ", ".join(f"{name}: {ends[name][2].decode()}" for name in wrong[:5]))
    for kind in (".args", ".mpfw"):
        if not any(name.endswith(kind) or (cases / name).with_suffix(kind).exists() for name in ends):
            raise SystemExit(f"no case has {kind}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--tool", required=True)
    tool = parser.parse_args().tool
    with tempfile.TemporaryDirectory() as temporary:
        root = pathlib.Path(temporary)
        (root / "locale").mkdir()
        here = root / "here"
        elsewhere = root / "some where" / "else"
        for place in (here, elsewhere):
            shutil.copytree(CASES, place / "cases")
        plain = {"PATH": os.environ["PATH"], "LC_ALL": "C", "TZ": "UTC"}
        other = {"PATH": "/nowhere", "TZ": "Pacific/Kiritimati", "HOME": "/nowhere", "TERM": "dumb",
                 "COLUMNS": "20", "POSIXLY_CORRECT": "1", "TMPDIR": "/nowhere",
                 **make_locale(root / "locale")}
        first = expand_all(tool, here / "cases", here / "out", plain)
        os.umask(0o077)
        second = expand_all(tool, elsewhere / "cases", elsewhere / "out", other)
        refuse_usage_errors(first, here / "cases")
        differ = [name for name in first if first[name] != second[name]]
        for made in sorted((here / "out").rglob("*")):
            if made.is_file():
                twin = elsewhere / "out" / made.relative_to(here / "out")
                if not twin.exists() or made.read_bytes() != twin.read_bytes():
                    differ.append(str(made.relative_to(root)))
        if differ:
            raise SystemExit("what surrounds the tool decides: " + ", ".join(differ[:20]))
        expanded = sum(status[0] == 0 for status in first.values())
        if expanded < 100:
            raise SystemExit(f"only {expanded} cases were expanded")
        print(f"{len(first)} cases, {expanded} of them without an error: the same bytes")


main()
