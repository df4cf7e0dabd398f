# SPDX-License-Identifier: MIT
"""What a work is: inputs that a generator makes, and the tools that can do it.

A work writes its inputs into a folder of its own: `input.tl` for tlexpand and the floor program, and
for each peer that can say the same a file `input.KIND` (see tools.py). The tools that take part are
those that have a file.
"""
import json
import os
from pathlib import Path


class Work:
    """Base of all works. `name` is also the name of its folder."""
    name = ""
    title = ""
    # The program in floor/ that makes the same output, or None.
    floor = None
    # Targets: CPU time as ratio to a peer ("fastest" or the name of one), and to the floor program.
    must = None
    goal = None
    peer = "fastest"
    floor_goal = None
    # A goal beside that: (tool, ratio), or None.
    second_goal = None
    # Targets of peak memory: as the documents say it, and the bytes for a folder of inputs.
    memory = ""
    # What counts: CPU time, or the time on the clock, then of many runs.
    clock = "cpu"
    times = 1
    # Options of tlexpand.
    options = ()
    # Tools of other kinds that take part: names of tools.py.
    extra = ()

    def write(self, folder, scale):
        """Writes the inputs, sizes multiplied by `scale`."""
        raise NotImplementedError

    def memory_limit(self, folder):
        """Bytes that tlexpand may need for the inputs in `folder`, or None."""
        return None


def scaled(size, scale):
    """`size` times `scale`, at least 1."""
    return max(1, int(size * scale))


def put(folder, name, *parts):
    """Writes a file from texts."""
    Path(folder, name).write_text("".join(parts), encoding="utf-8")


def put_data(folder, data):
    """Writes the data that the template engines get."""
    put(folder, "input.json", json.dumps(data))


def put_same(folder, *kinds, of="tl"):
    """The input of one kind is that of others too."""
    for kind in kinds:
        os.link(Path(folder, f"input.{of}"), Path(folder, f"input.{kind}"))


def put_javascript(folder, template):
    """A template of Eta that EJS understands but for the mark of output."""
    put(folder, "input.eta", template)
    put(folder, "input.ejs", template.replace("<%=", "<%-"))


def put_macros(folder, macros, text):
    """Macros without arguments, then a text that uses them, for all macro processors."""
    put(folder, "input.tl", *(f"@def {name} = {{{body}}}\n" for name, body in macros), text)
    put(folder, "input.m4", *(f"m4_define({name}, {body})m4_dnl\n" for name, body in macros),
        M4_NO_QUOTES, text)
    defines = [f"#define {name} {body}\n" for name, body in macros]
    put(folder, "input.gpp", *defines, text)
    put(folder, "input.c", *defines, text)


# From here on, quotes and comments are text.
M4_NO_QUOTES = "m4_changequote(,)m4_changecom()m4_dnl\n"


def input_size(folder):
    return Path(folder, "input.tl").stat().st_size


MB = 1 << 20
