# SPDX-License-Identifier: MIT
"""300,000 calls with three arguments that the body uses twice each, nested two deep: half of them in
the body of another macro, half in an argument."""
from harness.words import Words
from harness.work import M4_NO_QUOTES, MB, Work, input_size, put, scaled


class Calls(Work):
    name = "calls"
    title = "300,000 calls, three arguments used twice, two deep"
    floor = "calls"
    must, goal, floor_goal = 0.5, 0.14, 2.0
    memory = "input + 8 MB"

    def lines(self, scale):
        """Lines with a call each, five calls on two lines."""
        words = Words(3)
        for i in range(scaled(60_000, scale)):
            a, b, c, d, e = (words.word() for _ in range(5))
            yield f"{a}{i} = outer({b}, {c}, {d});\n"
            yield f"{b}{i} = inner(inner({a}, {b}, {c}), {d}, {e});\n"

    def write(self, folder, scale):
        lines = "".join(self.lines(scale))
        put(folder, "input.tl",
            "@def inner(a, b, c) = {[a b c c b a]}\n",
            "@def outer(a, b, c) = {inner(a, b, c) + inner(c, b, a)}\n", lines)
        put(folder, "input.m4",
            "m4_define(`inner', `[$1 $2 $3 $3 $2 $1]')m4_dnl\n",
            "m4_define(`outer', `inner($1, $2, $3) + inner($3, $2, $1)')m4_dnl\n", M4_NO_QUOTES, lines)
        put(folder, "input.c", "#define inner(a, b, c) [a b c c b a]\n",
            "#define outer(a, b, c) inner(a, b, c) + inner(c, b, a)\n", lines)
        # gpp takes the blank behind a comma for a part of the argument.
        put(folder, "input.gpp", "#define inner(a,b,c) [a b c c b a]\n",
            "#define outer(a,b,c) inner(a,b,c) + inner(c,b,a)\n", lines.replace(", ", ","))

    def memory_limit(self, folder):
        return input_size(folder) + 8 * MB
