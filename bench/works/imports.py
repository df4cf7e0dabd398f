# SPDX-License-Identifier: MIT
"""A file that imports 1,000 files with ten definitions each and uses every definition once."""
from pathlib import Path

from harness.words import Words
from harness.work import MB, Work, put, put_same, scaled


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
            put_unit(folder, i, macros[10 * i:10 * i + 10])
        names = words.shuffled(name for name, _ in macros)
        text = "".join(f"use {name};\n" for name in names)

        def imports(form):
            return "".join(form.replace("FILE", f"units/unit{i}") for i in range(files))

        put(folder, "input.tl", imports('@import "FILE.tl"\n'), text)
        put(folder, "input.m4", imports("m4_include(`FILE.m4')m4_dnl\n"), text)
        put(folder, "input.c", imports('#include "FILE.h"\n'), text)
        put_same(folder, "gpp", of="c")
        put(folder, "input.php", "<?php\n", imports("require 'FILE.php';\n"), "?>\n",
            *(f"use <?={name}?>;\n" for name in names))

    def memory_limit(self, folder):
        return 6 * MB


def put_unit(folder, i, macros):
    """One imported file, in each language."""
    put(folder, f"units/unit{i}.tl", *(f"@def {name} = {{{body}}}\n" for name, body in macros))
    put(folder, f"units/unit{i}.m4", *(f"m4_define({name}, {body})m4_dnl\n" for name, body in macros))
    put(folder, f"units/unit{i}.h", *(f"#define {name} {body}\n" for name, body in macros))
    put(folder, f"units/unit{i}.php", "<?php\n", *(f"const {name} = '{body}';\n" for name, body in macros))
