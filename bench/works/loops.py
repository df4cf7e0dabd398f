# SPDX-License-Identifier: MIT
"""One loop over 1,000,000 elements, as @for over a list and as @while."""
from harness.words import Words
from harness.work import Work, input_size, put, put_data, put_javascript, scaled


class For(Work):
    name = "for"
    title = "one @for over 1,000,000 elements"
    floor = "for"
    must, goal, floor_goal = 0.5, 0.22, 2.0
    second_goal = ("php", 1.0)
    memory = "3.5 x list"

    def write(self, folder, scale):
        words = Words(4)
        names = [f"{words.word()}{i}" for i in range(scaled(1_000_000, scale))]
        put(folder, "input.tl", "@def names = {[", ", ".join(names), "]}\n",
            "@for(name in names){case name: return 1;\n}@//\n")
        put_data(folder, {"names": names})
        put(folder, "input.jinja", "{% for name in names %}case {{ name }}: return 1;\n{% endfor %}")
        put(folder, "input.nunjucks", "{% for name in names %}case {{ name }}: return 1;\n{% endfor %}")
        put(folder, "input.mako", "% for name in names:\ncase ${name}: return 1;\n% endfor\n")
        put(folder, "input.php", "<?php foreach (json_decode(file_get_contents('input.json'))->names as $name) { ?>\n",
            "case <?=$name?>: return 1;\n<?php }")
        put_javascript(folder, "<% for (const name of it.names) { %>case <%= name %>: return 1;\n<% } %>")

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
        put(folder, "input.m4", "m4_define(`count', `m4_ifelse(m4_eval($1 < $2), 1, `case $1: return 1;\n",
            f"count(m4_incr($1), $2)')')m4_dnl\ncount(0, {count})m4_dnl\n")
        put(folder, "input.jinja", f"{{% for i in range({count}) %}}case {{{{ i }}}}: return 1;\n{{% endfor %}}")
        put(folder, "input.nunjucks", f"{{% for i in range({count}) %}}case {{{{ i }}}}: return 1;\n{{% endfor %}}")
        put(folder, "input.mako", f"% for i in range({count}):\ncase ${{i}}: return 1;\n% endfor\n")
        put(folder, "input.php", f"<?php for ($i = 0; $i < {count}; ++$i) {{ ?>\ncase <?=$i?>: return 1;\n<?php }}")
        put_javascript(folder, f"<% for (let i = 0; i < {count}; ++i) {{ %>case <%= i %>: return 1;\n<% }} %>")
