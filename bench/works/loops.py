"""One loop over 1,000,000 elements, as @for over a list and as @while."""
from harness.words import Words
from harness.work import Work, input_size, put, scaled


class For(Work):
    name = "for"
    title = "one @for over 1,000,000 elements"
    floor = "for"
    must, goal, floor_goal = 0.5, 0.22, 2.0
    memory = "3.5 x list"

    def write(self, folder, scale):
        words = Words(4)
        names = [f"{words.word()}{i}" for i in range(scaled(1_000_000, scale))]
        put(folder, "input.tl", "@def names = {[", ", ".join(names), "]}\n",
            "@for(name in names){case name: return 1;\n}@//\n")

    def memory_limit(self, folder):
        return 3.5 * input_size(folder)


class While(Work):
    name = "while"
    title = "the same as @while"
    floor = "while"

    def write(self, folder, scale):
        count = scaled(1_000_000, scale)
        put(folder, "input.tl", "@let int i = {0}\n",
            f"@while(i < {count}){{case i: return 1;\n@let i = {{i + 1}}}}@//\n")
