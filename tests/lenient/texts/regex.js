const r = /['"]\/*[^/]*/g, s = a / b / c;
