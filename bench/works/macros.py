# SPDX-License-Identifier: MIT
"""C++-like text in which every fifth identifier is one of 1,000 macros."""
from harness.words import Words, replace_every
from harness.work import Work, input_size, put_macros, scaled


class Macros(Work):
    name = "macros"
    title = "8 MB, every fifth identifier one of 1,000 macros"
    floor = "definitions"
    must, goal, floor_goal = 0.5, 0.18, 0.8
    memory = "2.2 x input"

    def write(self, folder, scale):
        words = Words(2)
        macros = [(f"{words.word()}_{i}", words.word() if i % 3 else f"{words.word()}.{words.word()}")
                  for i in range(1000)]
        text = replace_every(words.program(scaled(8_000_000, scale)), 5, lambda: words.pick(macros)[0])
        put_macros(folder, macros, text)

    def memory_limit(self, folder):
        return 2.2 * input_size(folder)
