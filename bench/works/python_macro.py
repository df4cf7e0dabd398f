# SPDX-License-Identifier: MIT
"""A macro of @defpython called 100,000 times."""
from harness.work import Work, put, put_javascript, scaled

FORMS = {
    "tl": "@defpython f(int n) = {n * n % 97}\n@let int i = {0}\n@while(i < COUNT){f(i)\n@let i = {i + 1}}@//\n",
    "mako": "% for i in range(COUNT):\n${i * i % 97}\n% endfor\n",
    "jinja": "{% for i in range(COUNT) %}{{ i * i % 97 }}\n{% endfor %}",
    "nunjucks": "{% for i in range(COUNT) %}{{ i * i % 97 }}\n{% endfor %}",
    "php": "<?php for ($i = 0; $i < COUNT; ++$i) { echo $i * $i % 97, \"\\n\"; }",
}


class PythonMacro(Work):
    name = "python"
    title = "a Python macro called 100,000 times"
    floor = "python"
    must, goal, peer = 1.5, 1.0, "mako"
    memory = "flat"

    def write(self, folder, scale):
        count = str(scaled(100_000, scale))
        for kind, text in FORMS.items():
            put(folder, f"input.{kind}", text.replace("COUNT", count))
        put_javascript(folder, f"<% for (let i = 0; i < {count}; ++i) {{ %><%= i * i % 97 %>\n<% }} %>")
