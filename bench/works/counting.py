"""Counting with @while, @let, @if and @( )."""
from harness.work import MB, Work, put, scaled


class Counting(Work):
    name = "counting"
    title = "counting to 200,000: @while, @let, @if, @( )"
    floor = "counting"
    must, goal, floor_goal = 0.8, 0.25, 6
    memory = "6 MB"

    def write(self, folder, scale):
        count = scaled(200_000, scale)
        put(folder, "input.tl", "@let int i = {0}\n",
            f"@while(i < {count})", "{@if(i % 3 == 0){third @(i / 3)}@else{i}\n",
            "@let i = {i + 1}}@//\n")

    def memory_limit(self, folder):
        return 6 * MB
