"""The tools that are compared: what each reads and how it is started.

In a command, {in} is the work's input of the tool's kind, {out} the file that it writes (without one
it writes to standard output), {data} the work's data for template engines, {peers} the folder of
their drivers and {build} the folder of the benchmark's programs.
"""
from dataclasses import dataclass


@dataclass(frozen=True)
class Tool:
    name: str
    kind: str
    command: tuple
    # What must exist for it: a program, or a file (with a slash).
    needs: str = ""
    # A C preprocessor drops comments and writes empty lines as it likes: both are taken out of the
    # two texts before they are compared.
    drops_comments: bool = False


def tlexpand(name, path, options):
    return Tool(name, "tl", (path, *options, "-o", "{out}", "{in}"), path)


def floor(program):
    path = "{build}/floor_" + program
    return Tool("floor", "tl", (path, "{in}", "{out}"))


# An empty program shows what any start costs.
EMPTY = Tool("empty", "tl", ("{build}/floor_empty",))
EXTRA = {"empty": EMPTY}

PEERS = ()
