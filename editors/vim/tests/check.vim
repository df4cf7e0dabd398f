" SPDX-License-Identifier: MIT
" Run by scripts/check-editors: vim -Nes -u NONE -c 'source tests/check.vim' with the folder of the
" plug-in in $TL_VIM, the texts to be read in $TL_TEXTS (separated by line feeds) and the directives in
" $TL_DIRECTIVES. Prints what is wrong; the exit status says whether anything is.
let &runtimepath = $TL_VIM . ',' . &runtimepath
filetype plugin on
syntax on

function s:Group(line, column)
    return synIDattr(synID(a:line, a:column, 1), 'name')
endfunction

" What is shown where: text, column, group.
let s:rows = [
    \ ['@def greet(who) = {Hello}', 1, 'tlDirective'],
    \ ['@def + int area(w) = {1}', 8, 'tlType'],
    \ ['@let string s = {"x"}', 6, 'tlType'],
    \ ['@let string s = {"x"}', 18, 'tlString'],
    \ ['@for(x in [a]){x}', 2, 'tlRepeat'],
    \ ['@if(true){x}@else{y}', 1, 'tlConditional'],
    \ ['@if(true){x}@else{y}', 13, 'tlConditional'],
    \ ['@import "x.tl"', 3, 'tlInclude'],
    \ ['@assertfails(x)', 14, ''],
    \ ['@assertfails(x)', 12, 'tlAssert'],
    \ ['a@@b', 2, 'tlPaste'],
    \ ['@(1 + 2)', 1, 'tlOperator'],
    \ ['@(1 + 2)', 3, 'tlNumber'],
    \ ['@// for the reader', 5, 'tlDirectiveComment'],
    \ ['a @/* b */ c', 5, 'tlDirectiveComment'],
    \ ['a @/* b */ c', 12, ''],
    \ ['int a; // stays', 10, 'tlComment'],
    \ ['for f in dir/*; @def', 17, 'tlDirective'],
    \ ['a/* b */ c', 5, 'tlComment'],
    \ ['a/* b */ c', 10, ''],
    \ ['"$(ROOT)/a"', 3, 'tlDollar'],
    \ ['"a\n"', 3, 'tlEscape'],
    \ ['"a\q"', 3, 'tlBadEscape'],
    \ ['r"C:\temp" x', 6, 'tlRawString'],
    \ ['r"x\" + a r"y" b', 5, 'tlRawString'],
    \ ['r"x\" + a r"y" b', 7, ''],
    \ ['r"x\" + a r"y" b', 9, ''],
    \ ['r"x\" + a r"y" b', 13, 'tlRawString'],
    \ ['r"x\" + a r"y" b', 16, ''],
    \ ["R'x\\' + 'b' c", 5, 'tlRawString'],
    \ ["R'x\\' + 'b' c", 10, 'tlString'],
    \ ['ann@example.org @unknown', 18, ''],
    \ ]
new
setfiletype tl
call setline(1, map(copy(s:rows), 'v:val[0]'))
for s:index in range(len(s:rows))
    let [s:text, s:column, s:group] = s:rows[s:index]
    call assert_equal(s:group, s:Group(s:index + 1, s:column), s:text . ' at ' . s:column)
endfor
call assert_equal('tl', &filetype)
call assert_equal('@// %s', &commentstring)

%delete _
let s:words = split($TL_DIRECTIVES)
call assert_true(len(s:words) > 20, 'no directives are found')
call setline(1, map(copy(s:words), '"@" . v:val . " x"'))
for s:index in range(len(s:words))
    call assert_match('^tl', s:Group(s:index + 1, 2), 'the directive @' . s:words[s:index])
endfor
bwipeout!

" Whole texts: they are known by their names, and each directive outside of strings and comments is
" shown.
for s:file in split($TL_TEXTS, "\n")
    execute 'edit ' . fnameescape(s:file)
    call assert_equal('tl', &filetype, s:file)
    for s:number in range(1, line('$'))
        let s:line = getline(s:number)
        let s:column = match(s:line, '@\%(def\|let\|for\|if\|else\|import\|str\)\>')
        if s:column >= 0
            call assert_match('^tl', s:Group(s:number, s:column + 2), s:file . ':' . s:number)
        endif
    endfor
endfor

" The quickfix list.
compiler! tlexpand
cgetexpr ['lib.tl(12) : error : Division by zero error', '    in @(1 / 0)', ' 12 | @(a / b)',
    \ 'called from main.tl(8)', 'in round 2 of the loop at main.tl(7)']
let s:places = map(filter(getqflist(), 'v:val.valid'), 'bufname(v:val.bufnr) . ":" . v:val.lnum')
call assert_equal(['lib.tl:12', 'main.tl:8', 'main.tl:7'], s:places)
call assert_equal('Division by zero error', getqflist()[0].text)

if empty(v:errors)
    verbose echo len(s:rows) . ' places, no faults'
    qall!
endif
for s:error in v:errors
    verbose echo s:error
endfor
cquit!
