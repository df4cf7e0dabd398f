# SPDX-License-Identifier: MIT
"""Checks the data of the editors' folders against the tool.

    check_data.py TLEXPAND FOLDER        FOLDER: editors/

The problem matchers find file, line and message in what the tool prints; the task of the folder's README runs,
and names problem matchers that there are; the snippets, with their
own proposals filled in, are texts that the tool expands; all files are well-formed.
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile

FAULTS = []


def expect(condition, what):
    if not condition:
        FAULTS.append(what)


def run(tool, text, folder):
    (folder / "text.tl").write_text(text)
    result = subprocess.run([tool, "text.tl"], cwd=folder, capture_output=True, text=True,
                            check=False, timeout=100)
    return result.returncode, result.stderr


def check_matchers(tool, package, folder):
    patterns = {p["name"]: p for p in package["contributes"]["problemPatterns"]}
    for matcher in package["contributes"]["problemMatchers"]:
        expect(matcher["pattern"].lstrip("$") in patterns, f"no pattern {matcher['pattern']}")
    pattern = patterns["tlexpand"]
    (folder / "with (1) brackets.tl").write_text("@def half(int n) = {@(n / 0)}\n")
    status, printed = run(tool, '@import "with (1) brackets.tl"\n\nhalf(2)\n', folder)
    expect(status == 1, "the wrong text is expanded")
    found = [m for m in map(re.compile(pattern["regexp"]).match, printed.splitlines()) if m]
    expect(len(found) == 1, f"{len(found)} lines of the diagnostic are taken for errors\n{printed}")
    for match in found:
        values = [match.group(pattern[key]) for key in ("file", "line", "severity", "message")]
        expect(values == ["with (1) brackets.tl", "1", "error", "Division by zero error"],
               f"the problem matcher reads {values}")
    note = patterns["tlexpand-note"]
    for line, wanted in (("called from a (b).tl(12)", ["called from", "a (b).tl", "12"]),
                         ("imported from x.tl(1)", ["imported from", "x.tl", "1"]),
                         ("opened at x.tl(7)", ["opened at", "x.tl", "7"]),
                         ("in round 2 of the loop at x.tl(3)",
                          ["in round 2 of the loop at", "x.tl", "3"])):
        match = re.match(note["regexp"], line)
        got = [match.group(note[key]) for key in ("message", "file", "line")] if match else None
        expect(got == wanted, f"the matcher of notes reads {got} in {line}")
    notes = [line for line in printed.splitlines() if re.match(note["regexp"], line)]
    expect(len(notes) >= 1, f"the diagnostic has no note that the matcher knows\n{printed}")


def check_task(tool, readme, package, folder):
    """Runs the task that is shown on a text, as the editor would: its variables replaced, without a shell."""
    shown = re.findall(r"^```json\n(.*?)^```$", readme.read_text(), re.DOTALL | re.MULTILINE)
    tasks = [task for text in shown for task in json.loads(text)["tasks"]]
    expect(len(tasks) == 1, f"{len(tasks)} tasks are shown")
    names = {matcher["name"] for matcher in package["contributes"]["problemMatchers"]}
    place = folder / "a folder"
    place.mkdir()
    (place / "table.cpp.tl").write_text("@(1 + 1)\n")
    for task in tasks:
        expect(task["type"] == "process" and task["command"] == "tlexpand",
               f"the task starts {task['command']}")
        expect({matcher.lstrip("$") for matcher in task["problemMatcher"]} == names,
               f"the task has the problem matchers {task['problemMatcher']}")
        values = {"file": place / "table.cpp.tl", "fileDirname": place,
                  "fileBasenameNoExtension": "table.cpp"}
        arguments = [re.sub(r"\$\{(\w+)\}", lambda m: str(values[m.group(1)]), argument)
                     for argument in task["args"]]
        result = subprocess.run([tool, *arguments], cwd=folder, capture_output=True, text=True,
                                check=False, timeout=100)
        expect(result.returncode == 0, f"the task ends with {result.returncode}: {result.stderr}")
        made = place / "table.cpp"
        expect(made.exists() and made.read_text() == "2\n", "the task does not make table.cpp")


def fill_in(body):
    text = "\n".join(body)
    values = {}

    def proposal(match):
        number, value = match.group(1), match.group(2)
        value = value.strip("|").split(",")[0] if value.startswith("|") else value[1:]
        value = re.sub(r"\$(\d+)", lambda m: values.get(m.group(1), ""), value)
        return values.setdefault(number, value)
    text = re.sub(r"\$\{(\d+)(\|[^|]*\||:[^}]*)\}", proposal, text)
    return re.sub(r"\$(\d+)|\$\{(\d+)\}", lambda m: values.get(m.group(1) or m.group(2), ""),
                  text)


def check_snippets(tool, path, folder):
    (folder / "file.tl").write_text("@def name = {n}\n")
    snippets = json.loads(path.read_text())
    before = "@def rows = {[(a, b)]}\n"
    for name, snippet in snippets.items():
        text = fill_in(snippet["body"])
        if name == "Separated list":
            text = text.replace("rows", "[a, b]")
        status, printed = run(tool, before + text + "\n", folder)
        wanted = 1 if name == "Failure" else 0
        expect(status == wanted or "Python is disabled" in printed,
               f"the snippet {name}: status {status}\n{text}\n{printed}")
        expect(wanted == 0 or "what is wrong name" in printed, f"the snippet {name}: {printed}")


def main():
    tool, editors = str(pathlib.Path(sys.argv[1]).resolve()), pathlib.Path(sys.argv[2])
    vscode = editors / "vscode"
    package = json.loads((vscode / "package.json").read_text())
    for contribution in ("languages", "grammars", "snippets"):
        for entry in package["contributes"][contribution]:
            file = entry.get("path", entry.get("configuration"))
            json.loads((vscode / file).read_text())
    with tempfile.TemporaryDirectory() as temporary:
        check_matchers(tool, package, pathlib.Path(temporary))
        check_task(tool, vscode / "README.md", package, pathlib.Path(temporary))
        check_snippets(tool, vscode / "snippets" / "tl.json", pathlib.Path(temporary))
    for fault in FAULTS:
        print(fault, file=sys.stderr)
    return 1 if FAULTS else 0


if __name__ == "__main__":
    sys.exit(main())
