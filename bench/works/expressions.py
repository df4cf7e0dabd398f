# SPDX-License-Identifier: MIT
"""1,000,000 expressions: every operator and function, and strings; forty in each round of a loop."""
from harness.work import MB, Work, put, put_javascript, scaled

# Each expression of the language; what it is in Python and JavaScript where that is not the same,
# and in PHP where that is not what it is in JavaScript with `$` before names.
EXPRESSIONS = (
    ("i + 3",),
    ("i - 70000",),
    ("i * 7",),
    ("i / 3", "i // 3", "Math.trunc(i / 3)", "intdiv($i, 3)"),
    ("i % 11",),
    ("-i", None, "0 - i"),  # JavaScript has a negative zero
    ("+i",),
    ("~i",),
    ("!(i == 4)", "text(not (i == 4))", None, "text(!($i == 4))"),
    ("2 ^^ (i % 10)", "2 ** (i % 10)", "2 ** (i % 10)"),
    ("i << 2",),
    ("i >> 1",),
    ("i & 12",),
    ("i ^ 5",),
    ("i | 3", "(i | 3)"),
    ("i < 100", "text(i < 100)", None, "text($i < 100)"),
    ("i <= 100", "text(i <= 100)", None, "text($i <= 100)"),
    ("i > 100", "text(i > 100)", None, "text($i > 100)"),
    ("i >= 100", "text(i >= 100)", None, "text($i >= 100)"),
    ("i == 100", "text(i == 100)", None, "text($i == 100)"),
    ("i != 100", "text(i != 100)", None, "text($i != 100)"),
    ("i % 2 == 0 && i % 3 == 0", "text(i % 2 == 0 and i % 3 == 0)", None,
     "text($i % 2 == 0 && $i % 3 == 0)"),
    ("i % 2 == 0 || i % 3 == 0", "text(i % 2 == 0 or i % 3 == 0)", None,
     "text($i % 2 == 0 || $i % 3 == 0)"),
    ("i % 5 > 2 ? i * 2 : i", "i * 2 if i % 5 > 2 else i"),
    ("x * 2.5",),
    ("x / 8 + 0.0625",),
    ("(i + 2) * (i - 2) % 0xff", "int(math.fmod((i + 2) * (i - 2), 0xff))"),
    ("@str(s) + \"-\" + 'b'", "s + '-' + 'b'", "s + '-' + 'b'", "$s . '-' . 'b'"),
    ("len(@str(s))", "len(s)", "s.length", "strlen($s)"),
    ("@str(s)[i % 4]", "s[i % 4]", "s[i % 4]", "$s[$i % 4]"),
    ("\"abc\" < @str(s)", "text('abc' < s)", "'abc' < s", "text('abc' < $s)"),
    ("r\"a\\b\" + \"\\\"\"", "r'a\\b' + '\"'", "String.raw`a\\b` + '\"'", "'a\\b' . '\"'"),
    ("bool(i % 2)", "text(bool(i % 2))", "Boolean(i % 2)", "text((bool)($i % 2))"),
    ("int(x)", None, "Math.trunc(x)", "(int)$x"),
    ("double(i) / 4 + 0.125", "float(i) / 4 + 0.125", "Number(i) / 4 + 0.125", "(float)$i / 4 + 0.125"),
    ("char(65 + i % 26)", "chr(65 + i % 26)", "String.fromCharCode(65 + i % 26)", "chr(65 + $i % 26)"),
    ("string(i) + \"th\"", "str(i) + 'th'", "String(i) + 'th'", "(string)$i . 'th'"),
    ("is_int(i) && !is_bool(i) && is_double(x) && is_string(@str(s)) && !is_char(i)",
     "text(isinstance(i, int) and not isinstance(i, bool) and isinstance(x, float) and isinstance(s, str)"
     " and not isinstance(i, str))",
     "Number.isInteger(i) && typeof i !== 'boolean' && typeof x === 'number' && typeof s === 'string'"
     " && typeof i !== 'string'",
     "text(is_int($i) && !is_bool($i) && is_float($x) && is_string($s) && !is_string($i))"),
    ("int(sin(i) * 1000) + int(cos(i) * 1000) + int(tan(0.5) * 100)",
     "int(math.sin(i) * 1000) + int(math.cos(i) * 1000) + int(math.tan(0.5) * 100)",
     "Math.trunc(Math.sin(i) * 1000) + Math.trunc(Math.cos(i) * 1000) + Math.trunc(Math.tan(0.5) * 100)",
     "(int)(sin($i) * 1000) + (int)(cos($i) * 1000) + (int)(tan(0.5) * 100)"),
    ("int(exp(i % 5) * 10) + int(log(i + 1) * 100)", "int(math.exp(i % 5) * 10) + int(math.log(i + 1) * 100)",
     "Math.trunc(Math.exp(i % 5) * 10) + Math.trunc(Math.log(i + 1) * 100)",
     "(int)(exp($i % 5) * 10) + (int)(log($i + 1) * 100)"),
)

TL = """\
@let int i = {0}
@while(i < ROUNDS){@let double x = {i / 4.0 + 0.125}@let string s := {item@@i}LINE
@let i = {i + 1}}@//
"""

MAKO = """\
<%!
import math
def text(value):
    return "true" if value else "false"
%>\\
% for i in range(ROUNDS):
<% x = i / 4.0 + 0.125; s = "item" + str(i) %>\\
LINE
% endfor
"""

PHP = """\
<?php
function text($value) { return $value ? 'true' : 'false'; }
for ($i = 0; $i < ROUNDS; ++$i) {
$x = $i / 4.0 + 0.125; $s = 'item' . $i; ?>
LINE
<?php }
"""

JAVASCRIPT = """\
<% for (let i = 0; i < ROUNDS; ++i) { const x = i / 4.0 + 0.125; const s = 'item' + i; %>LINE
<% } %>"""


def forms():
    """The expressions as lists in each of the languages."""
    result = {"tl": [], "python": [], "javascript": [], "php": []}
    for row in EXPRESSIONS:
        own, python, javascript, php = (row + (None,) * 3)[:4]
        result["tl"].append(own)
        result["python"].append(python or own)
        result["javascript"].append(javascript or own)
        result["php"].append(php or dollars(javascript or own))
    return result


def dollars(expression):
    return " ".join("$" + word if word in ("i", "x") else word for word in
                    expression.replace("(", "( ").replace("-i", "- i").replace("+i", "+ i").replace("~i", "~ i")
                    .replace(")", " )").split(" "))


class Expressions(Work):
    name = "expressions"
    title = "1,000,000 expressions, all operators, functions, strings"
    floor = "expressions"
    must, goal, peer = 0.8, 0.3, "eta"
    memory = "6 MB"

    def write(self, folder, scale):
        rounds = str(scaled(1_000_000 // len(EXPRESSIONS), scale))
        lines = forms()

        def text(template, form, begin, end):
            line = " ".join(begin + expression + end for expression in lines[form])
            return template.replace("ROUNDS", rounds).replace("LINE", line)

        put(folder, "input.tl", text(TL, "tl", "@(", ")"))
        put(folder, "input.mako", text(MAKO, "python", "${", "}"))
        # A line end behind the last mark would be dropped.
        php = text(PHP, "php", "<?=", "?>")
        put(folder, "input.php", php.replace("?>\n<?php }", ", \"\\n\"?>\n<?php }"))
        put_javascript(folder, text(JAVASCRIPT, "javascript", "<%= ", " %>"))

    def memory_limit(self, folder):
        return 6 * MB
