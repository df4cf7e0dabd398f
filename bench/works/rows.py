# SPDX-License-Identifier: MIT
"""100,000 rows of ten columns, read from CSV and written by a template."""
from harness.words import Words
from harness.work import Work, put, scaled

COLUMNS = ("id", "name", "kind", "unit", "low", "high", "group", "owner", "state", "note")


class Rows(Work):
    name = "rows"
    title = "100,000 rows of ten columns from CSV"
    must = 1.0
    peer = "mako"
    options = ("--list", "rows=input.csv")

    def write(self, folder, scale):
        words = Words(11)
        put(folder, "input.csv", ",".join(COLUMNS), "\n",
            *(self.row(words, i) for i in range(scaled(100_000, scale))))
        put(folder, "input.tl", f"@for(({', '.join(COLUMNS)}) in rows)\n{{\n    "
            "{id, name, kind, unit, low, high, group, owner, state}, note\n\n}@//\n")
        values = ", ".join(f"${{{column}}}" for column in COLUMNS[:-1])
        put(folder, "input.mako", f"% for {', '.join(COLUMNS)} in rows:\n"
            f"{{{values}}}, ${{note}}\n% endfor\n")

    def row(self, words, i):
        names = [f"{words.word()}{i}" for _ in range(6)]
        note = f'"{words.word()}, {words.word()}"' if i % 3 == 0 else words.word()
        return f"{i},{names[0]},{names[1]},{names[2]},{i % 97},{i * 7},{names[3]},{names[4]},{names[5]},{note}\n"
