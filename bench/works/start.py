"""A file of 1 KB with a few definitions: what it costs to start."""
from harness.words import Words
from harness.work import MB, Work, put


class Start(Work):
    name = "start"
    title = "start on a 1 KB file (wall)"
    floor = "definitions"
    must, goal, peer = 1.1, None, "gpp"
    memory = "3 MB"
    clock = "wall"
    times = 20
    extra = ("empty",)

    def write(self, folder, scale):
        words = Words(6)
        macros = [(f"name_{i}", words.word()) for i in range(5)]
        uses = [f"{words.word()} = {words.pick(macros)[0]}({words.word()}, {i});\n" for i in range(25)]
        put(folder, "input.tl", *(f"@def {name} = {{{body}}}\n" for name, body in macros), *uses)

    def memory_limit(self, folder):
        return 3 * MB
