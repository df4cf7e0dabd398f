# SPDX-License-Identifier: MIT
"""A file of 1 KB with a few definitions: what it costs to start."""
from harness.words import Words
from harness.work import MB, Work, put, put_javascript, put_macros


class Start(Work):
    name = "start"
    title = "start on a 1 KB file (wall)"
    floor = "definitions"
    must, goal, peer = 1.1, None, "gpp"
    second_goal = ("empty", 1.15)
    memory = "3 MB"
    clock = "wall"
    times = 20
    extra = ("empty",)

    def write(self, folder, scale):
        words = Words(6)
        macros = [(f"name_{i}", words.word()) for i in range(5)]
        text = "".join(f"{words.word()}({words.word()}, {i}) = {words.pick(macros)[0]};\n" for i in range(25))
        put_macros(folder, macros, text)

        def marked(begin, end):
            parts = text.split("name_")
            return parts[0] + "".join(f"{begin}name_{part[0]}{end}{part[1:]}" for part in parts[1:])

        jinja = "".join(f'{{% set {name} = "{body}" %}}' for name, body in macros) + marked("{{ ", " }}")
        put(folder, "input.jinja", jinja)
        put(folder, "input.nunjucks", jinja)
        put(folder, "input.mako", "<%\n", *(f'{name} = "{body}"\n' for name, body in macros), "%>\\\n",
            marked("${", "}"))
        put(folder, "input.php", "<?php ", *(f'${name} = "{body}"; ' for name, body in macros), "?>\n",
            marked("<?=$", "?>"))
        put_javascript(folder, "<% " + "".join(f'const {name} = "{body}"; ' for name, body in macros) + "%>"
                       + marked("<%= ", " %>"))

    def memory_limit(self, folder):
        return 3 * MB
