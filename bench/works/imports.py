"""A file that imports 1,000 files with ten definitions each and uses every definition once."""
from pathlib import Path

from harness.words import Words
from harness.work import MB, Work, put, scaled


class Imports(Work):
    name = "imports"
    title = "importing 1,000 files of ten definitions, one use each"
    floor = "imports"
    must, goal, floor_goal = 0.8, 0.5, 1.5
    memory = "6 MB"

    def write(self, folder, scale):
        Path(folder, "units").mkdir()
        words = Words(7)
        files = scaled(1000, scale)
        macros = [(f"{words.word()}{i}", f"{words.word()}({i})") for i in range(10 * files)]
        for i in range(files):
            put(folder, f"units/unit{i}.tl",
                *(f"@def {name} = {{{body}}}\n" for name, body in macros[10 * i:10 * i + 10]))
        uses = [f"use {name};\n" for name, _ in words.shuffled(macros)]
        put(folder, "input.tl", *(f'@import "units/unit{i}.tl"\n' for i in range(files)), *uses)

    def memory_limit(self, folder):
        return 6 * MB
