"""A macro with a typed argument that calls itself 2,000 deep, 100 times."""
from harness.work import MB, Work, put, scaled


class Recursion(Work):
    name = "recursion"
    title = "recursion 2,000 deep, @def f(int n), 100 times"
    floor = "recursion"
    must, goal, floor_goal = 0.8, 0.25, 7
    memory = "12 MB"

    def write(self, folder, scale):
        depth = scaled(2000, scale)
        put(folder, "input.tl", "@def f(int n) = {@if(n > 0){n f(n - 1)}}\n",
            *(f"{round}: f({depth}).\n" for round in range(100)))

    def memory_limit(self, folder):
        return 12 * MB
