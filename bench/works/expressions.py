"""1,000,000 expressions: every operator and function, and strings; forty in each round of a loop."""
from harness.work import MB, Work, put, scaled

# Each expression of the language, and what a template in JavaScript says for it.
EXPRESSIONS = (
    "i + 3", "i - 70000", "i * 7", "i / 3", "i % 11", "-i", "+i", "~i", "!(i == 4)", "2 ^^ (i % 10)",
    "i << 2", "i >> 1", "i & 12", "i ^ 5", "i | 3", "i < 100", "i <= 100", "i > 100", "i >= 100",
    "i == 100", "i != 100", "i % 2 == 0 && i % 3 == 0", "i % 2 == 0 || i % 3 == 0",
    "i % 5 > 2 ? i * 2 : i", "x * 2.5", "x / 8 + 0.0625", "(i + 2) * (i - 2) % 0xff",
    "@str(s) + \"-\" + 'b'", "len(@str(s))", "@str(s)[i % 4]", "\"abc\" < @str(s)", "r\"a\\b\" + \"\\\"\"",
    "bool(i % 2)", "int(x)", "double(i) / 4 + 0.125", "char(65 + i % 26)", "string(i) + \"th\"",
    "is_int(i) && !is_bool(i) && is_double(x) && is_string(@str(s)) && !is_char(i)",
    "int(sin(i) * 1000) + int(cos(i) * 1000) + int(tan(0.5) * 100)", "int(exp(i % 5) * 10) + int(log(i + 1) * 100)",
)


class Expressions(Work):
    name = "expressions"
    title = "1,000,000 expressions, all operators, functions, strings"
    floor = "expressions"
    must, goal, peer = 0.8, 0.3, "eta"
    memory = "6 MB"

    def write(self, folder, scale):
        rounds = scaled(1_000_000 // len(EXPRESSIONS), scale)
        put(folder, "input.tl", "@let int i = {0}\n", f"@while(i < {rounds}){{@let double x = {{i / 4.0 + 0.125}}",
            "@let string s := {item@@i}", " ".join(f"@({e})" for e in EXPRESSIONS), "\n",
            "@let i = {i + 1}}@//\n")

    def memory_limit(self, folder):
        return 6 * MB
