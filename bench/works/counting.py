# SPDX-License-Identifier: MIT
"""Counting with @while, @let, @if and @( )."""
from harness.work import MB, Work, put, put_javascript, scaled

JINJA = """{% for i in range(COUNT) %}{% if i % 3 == 0 %}third {{ i // 3 }}{% else %}{{ i }}{% endif %}
{% endfor %}"""

MAKO = """\
<% i = 0 %>\\
% while i < COUNT:
% if i % 3 == 0:
third ${i // 3}
% else:
${i}
% endif
<% i = i + 1 %>\\
% endwhile
"""

PHP = """\
<?php $i = 0; while ($i < COUNT) { if ($i % 3 == 0) { ?>
third <?=intdiv($i, 3), "\\n"; } else { echo $i, "\\n"; }
$i = $i + 1; }
"""

JAVASCRIPT = """<% let i = 0; while (i < COUNT) { if (i % 3 === 0) { %>third <%= Math.trunc(i / 3) %><% } else { %><%= i %><% } %>
<% i = i + 1; } %>"""

M4 = """\
m4_define(`count', `m4_ifelse(m4_eval($1 < COUNT), 1, `m4_ifelse(m4_eval($1 % 3), 0, `third m4_eval($1 / 3)', `$1')
count(m4_incr($1))')')m4_dnl
count(0)m4_dnl
"""


class Counting(Work):
    name = "counting"
    title = "counting to 200,000: @while, @let, @if, @( )"
    floor = "counting"
    must, goal, floor_goal = 0.8, 0.25, 6
    second_goal = ("php", 2.0)
    memory = "6 MB"

    def write(self, folder, scale):
        count = scaled(200_000, scale)
        put(folder, "input.tl", "@let int i = {0}\n",
            f"@while(i < {count})", "{@if(i % 3 == 0){third @(i / 3)}@else{i}\n",
            "@let i = {i + 1}}@//\n")
        for kind, text in (("m4", M4), ("jinja", JINJA), ("mako", MAKO), ("php", PHP), ("nunjucks", JINJA)):
            put(folder, f"input.{kind}", text.replace("COUNT", str(count)))
        put_javascript(folder, JAVASCRIPT.replace("COUNT", str(count)))

    def memory_limit(self, folder):
        return 6 * MB
