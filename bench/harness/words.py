# SPDX-License-Identifier: MIT
"""Deterministic words and C++-like text.

Everything comes from one generator of numbers, so the inputs are the same on each machine and with
each Python: only random() is used, whose sequence is promised.
"""
import random
import re

_SYLLABLES = ("frame item node list map key value size count index state block line text name path "
              "buffer token scan read write open close find make test run step level scope unit "
              "table row column cache limit owner").split()
_TYPES = "int bool double size_t std::string Frame Item const Node& std::vector<int> View".split(" ")


class Words:
    """Makes words, numbers and C++-like functions."""

    def __init__(self, seed):
        self._random = random.Random(seed)

    def below(self, n):
        return int(self._random.random() * n)

    def pick(self, choices):
        return choices[self.below(len(choices))]

    def shuffled(self, items):
        """The items in another order."""
        items = list(items)
        for last in range(len(items) - 1, 0, -1):
            other = self.below(last + 1)
            items[last], items[other] = items[other], items[last]
        return items

    def word(self):
        """An identifier of one to three syllables: size, frameCount, m_openTableRow."""
        first = self.pick(_SYLLABLES)
        rest = "".join(self.pick(_SYLLABLES).capitalize() for _ in range(self.below(3)))
        return ("m_" if self.below(5) == 0 else "") + first + rest

    def type_name(self):
        return "".join(self.pick(_SYLLABLES).capitalize() for _ in range(1 + self.below(2)))

    def number(self):
        return self.pick((str(self.below(10)), str(self.below(1000)), hex(self.below(65536)),
                          f"{self.below(100)}.{self.below(100)}"))

    def statement(self, indent):
        """One or more lines of a function's body."""
        space = "    " * indent
        kind = self.below(12)
        if kind < 3:
            return f"{space}{self.pick(_TYPES)} {self.word()} = {self.word()}({self.word()}, {self.number()});\n"
        if kind < 5:
            return f"{space}{self.word()}->{self.word()}[{self.number()}] += {self.word()} * {self.word()};\n"
        if kind < 7 and indent < 4:
            inner = "".join(self.statement(indent + 1) for _ in range(1 + self.below(3)))
            head = self.pick((f"if ({self.word()} >= {self.number()} && !{self.word()}.empty())",
                              f"for (size_t {self.word()} : {self.word()})",
                              f"while ({self.word()} < {self.number()})"))
            return f"{space}{head}\n{space}{{\n{inner}{space}}}\n"
        if kind < 8:
            return f"{space}// The {self.word()} of each {self.word()}, unless {self.word()} is {self.number()}.\n"
        if kind < 9:
            return f'{space}print("{self.word()} of %d: \\"{self.word()}\\"\\n", {self.word()}, \'{self.pick("abcxyz")}\');\n'
        if kind < 10:
            return f"{space}return {self.word()} ? {self.word()} : {self.word()} << {self.below(31)};\n"
        if kind < 11:
            return f"{space}{self.word()} = std::move({self.word()}); /* {self.word()} */\n"
        return f"{space}{self.word()}({self.word()}, {self.word()}.{self.word()}(), &{self.word()});\n"

    def function(self):
        """A whole function, with an empty line behind it."""
        arguments = ", ".join(f"{self.pick(_TYPES)} {self.word()}" for _ in range(self.below(4)))
        body = "".join(self.statement(1) for _ in range(3 + self.below(10)))
        return f"{self.pick(_TYPES)} {self.word()}({arguments})\n{{\n{body}}}\n\n"

    def program(self, size):
        """About `size` bytes of functions. There are 4,000 different ones."""
        functions = [self.function() for _ in range(4000)]
        parts = []
        made = 0
        while made < size:
            part = self.pick(functions)
            parts.append(part)
            made += len(part)
        return "".join(parts)


_NAMES = re.compile(r'"(?:[^"\\]|\\.)*"|\'[^\']*\'|//[^\n]*|/\*.*?\*/|\b0x[0-9a-f]+|[A-Za-z_]\w*')


def replace_every(text, step, make):
    """Every `step`th identifier of the text replaced by make(); not in strings and comments, and
    not before a parenthesis, which some tools would take for a call: then the next one."""
    count = 0

    def replace(match):
        nonlocal count
        word = match.group()
        if not (word[0].isalpha() or word[0] == "_"):
            return word
        count += 1
        if count < step or text[match.end():match.end() + 1] == "(":
            return word
        count = 0
        return make()

    return _NAMES.sub(replace, text)
