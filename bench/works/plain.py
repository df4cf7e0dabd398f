# SPDX-License-Identifier: MIT
"""C++-like text without directives and defined names: nothing is replaced."""
from harness.words import Words
from harness.work import M4_NO_QUOTES, MB, Work, input_size, put, put_same, scaled


class Plain(Work):
    name = "plain"
    title = "64 MB of C++ without directives"
    floor = "plain"
    must, goal, floor_goal = 0.5, 0.17, 0.6
    memory = "1.1 x input + 4 MB"

    def write(self, folder, scale):
        text = Words(1).program(scaled(64_000_000, scale))
        put(folder, "input.tl", text)
        put(folder, "input.m4", M4_NO_QUOTES, text)
        put_same(folder, "gpp", "c", "jinja", "mako", "php", "eta", "ejs", "nunjucks")

    def memory_limit(self, folder):
        return 1.1 * input_size(folder) + 4 * MB
