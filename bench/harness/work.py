"""What a work is: inputs that a generator makes, and the tools that can do it.

A work writes its inputs into a folder of its own: `input.tl` for tlexpand and the floor program, and
for each peer that can say the same a file `input.KIND` (see tools.py). The tools that take part are
those that have a file.
"""
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


def input_size(folder):
    return Path(folder, "input.tl").stat().st_size


MB = 1 << 20
