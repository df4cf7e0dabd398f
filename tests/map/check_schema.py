# SPDX-License-Identifier: MIT
"""Validates maps against the schema of the map file, and sees that the schema refuses bad ones.

    check_schema.py SCHEMA TESTS TLEXPAND

The maps are the expectations of the cases, those written by hand beside this file, and what the tool
writes for a text with everything in it.
"""
import copy
import json
import pathlib
import subprocess
import sys
import tempfile

import jsonschema

SOURCE = """@import "lib.tl"
@for(x in [a, b]){x: @(1 + 2) call(x)
}@// the end
"""


def run_tool(tool, arguments):
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        (root / "main.tl").write_text(SOURCE)
        (root / "lib.tl").write_text("@def call(y) = {<y>}\n")
        subprocess.run([tool, *arguments, "--map", "map", "main.tl"], cwd=root, check=True,
                       stdout=subprocess.DEVNULL)
        return json.loads((root / "map").read_text())


def spoil(document):
    """Documents that differ from a good one in one thing each."""
    def changed(change):
        spoilt = copy.deepcopy(document)
        change(spoilt)
        return spoilt
    yield changed(lambda d: d.pop("version"))
    yield changed(lambda d: d.update(version=2))
    yield changed(lambda d: d.pop("pieces"))
    yield changed(lambda d: d.update(crc32=2 ** 32))
    yield changed(lambda d: d.update(crc32="00000000"))
    yield changed(lambda d: d["pieces"][0].update(kind="copied"))
    yield changed(lambda d: d["pieces"][0].update(size=0))
    yield changed(lambda d: d["pieces"][0].update(source="main.tl"))
    yield changed(lambda d: d["pieces"][0].pop("in"))
    yield changed(lambda d: d["pieces"][-1].update({"source": None}))
    yield changed(lambda d: d["pieces"][0].update(chain=-1))
    yield changed(lambda d: d["pieces"][0].update(copied={"source": None, "in": None, "inSize": 0}))
    yield changed(lambda d: d.update(chains=[{"kind": "macro"}]))


def main():
    schema_path, tests, tool = sys.argv[1:]
    schema = json.loads(pathlib.Path(schema_path).read_text())
    jsonschema.Draft7Validator.check_schema(schema)
    validator = jsonschema.Draft7Validator(schema)
    count = 0
    folder = pathlib.Path(tests)
    for path in sorted([*folder.glob("cases/**/*.map"), *folder.glob("map/maps/*.map")]):
        validator.validate(json.loads(path.read_text()))
        count += 1
    for arguments in ([], ["-o", "out"], ["-o", "out", "--map-runs", "--dst-indent", "2"],
                      ["-o", "out", "--line-directives"], ["-o", "out", "--chains"]):
        document = run_tool(tool, arguments)
        validator.validate(document)
        count += 1
    for number, document in enumerate(spoil(run_tool(tool, ["-o", "out"]))):
        if validator.is_valid(document):
            sys.exit(f"spoilt map {number} passes")
    print(f"{count} maps are valid")


main()
