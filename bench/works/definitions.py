# SPDX-License-Identifier: MIT
"""100,000 definitions, each used once, in another order."""
from harness.words import Words
from harness.work import MB, Work, input_size, put_macros, scaled


class Definitions(Work):
    name = "definitions"
    title = "100,000 definitions, each used once"
    floor = "definitions"
    must, goal, floor_goal = 0.5, 0.20, 1.1
    memory = "input + 12 MB"

    def write(self, folder, scale):
        words = Words(5)
        macros = [(f"{words.word()}{i}", f"{words.word()} + {i}")
                  for i in range(scaled(100_000, scale))]
        uses = [f"use({name});\n" for name, _ in words.shuffled(macros)]
        put_macros(folder, macros, "".join(uses))

    def memory_limit(self, folder):
        return input_size(folder) + 12 * MB
