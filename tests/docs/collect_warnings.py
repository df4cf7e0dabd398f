# SPDX-License-Identifier: MIT
"""Runs the tool with every warning on, and keeps the warnings to itself.

    collect_warnings.py TOOL LOG [ARGUMENT...]

Does what TOOL does with the arguments, except that the first line of each warning is added to LOG,
once. A call that says itself what it wants to be warned of is left alone.
"""
import pathlib
import re
import signal
import subprocess
import sys

FIRST = re.compile(r".*\(\d+\) : (warning : .*)\n?")
NOTES = re.compile(r" *\d* \| |called from |in round |imported from |\.\.\. \d+ more")
OPTIONS = ("--warn", "--werror", "--help", "-h", "--version", "-V")


def main():
    tool, log, arguments = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3:]
    isExpansion = arguments[:1] not in (["project"], ["where"], ["remap"], ["explain"])
    if not isExpansion or any(word.startswith(OPTIONS) for word in arguments):
        return subprocess.run([tool, *arguments], check=False).returncode
    run = subprocess.run([tool, "--warn", "all", *arguments], stderr=subprocess.PIPE, check=False)
    rest, isWarning = b"", False
    for line in run.stderr.splitlines(keepends=True):
        text = line.decode(errors="surrogateescape")
        first = FIRST.fullmatch(text)
        if first:
            with log.open("a+", encoding="utf-8") as lines:
                lines.seek(0)
                if first[1] + "\n" not in lines:
                    lines.write(first[1] + "\n")
        isWarning = first is not None or (isWarning and NOTES.match(text) is not None)
        rest += b"" if isWarning else line
    sys.stderr.buffer.write(rest)
    return run.returncode


if __name__ == "__main__":
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    sys.exit(main())
