"""A macro of @defpython called 100,000 times."""
from harness.work import Work, put, scaled


class PythonMacro(Work):
    name = "python"
    title = "a Python macro called 100,000 times"
    floor = "python"
    must, goal, peer = 1.5, 1.0, "mako"
    memory = "flat"

    def write(self, folder, scale):
        count = scaled(100_000, scale)
        put(folder, "input.tl", "@defpython f(int n) = {n * n % 97}\n", "@let int i = {0}\n",
            f"@while(i < {count}){{f(i)\n@let i = {{i + 1}}}}@//\n")
