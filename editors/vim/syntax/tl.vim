" SPDX-License-Identifier: MIT
" The text macro language of tlexpand.
if exists('b:current_syntax')
    finish
endif

syntax case match
syntax iskeyword @,48-57,_,128-255

" Text: what is copied as one piece, and in which nothing is replaced.
syntax region tlString start=/\<[rR]\@!"/ start=/"/ skip=/\\./ end=/"/ oneline contains=tlEscape,tlBadEscape,tlDollar
syntax region tlString start=/'/ skip=/\\./ end=/'/ oneline contains=tlEscape,tlBadEscape
syntax match tlRawString /\<[rR]"[^"]*"/
syntax match tlRawString /\<[rR]'[^']*'/
syntax region tlBackQuoted start=/`/ end=/`/ oneline contains=tlPaste
syntax match tlBadEscape /\\./ contained
syntax match tlEscape /\\\%([abfnrtv0\\'"?]\|x\x\x\)/ contained
syntax match tlDollar /\$([A-Za-z_]\w*)/ contained
syntax match tlNumber /\<\%(0[xX]\x\+\|\d\+\%(\.\d\+\)\?\%([eE][-+]\?\d\+\)\?\)/
syntax match tlComment +//.*$+
" Behind a word, as in dir/*, it must close on its line: with --lenient it may be a pattern of files.
syntax region tlComment start=+\%([A-Za-z0-9_/.]\)\@1<!/\*+ start=+/\*\%(.*\*/\)\@=+ end=+\*/+

" Directives.
syntax match tlDirective /@\s*\%(let\|def\|exportdef\|nakeddef\|defpython\|runpython\|scope\|quote\)\>/
syntax match tlDirective /@\s*\%(str\|strx\|strW\|strxW\|unstr\|print\|println\)\>/
syntax match tlConditional /@\s*\%(if\|elseif\|else\)\>/
syntax match tlRepeat /@\s*\%(while\|for\)\>/
syntax match tlInclude /@\s*\%(import\|importpath\|relativepath\)\>/
syntax match tlAssert /@\s*\%(assert\|assertfails\|fail\)\>/
syntax match tlDefinition /@\s*\%(def\|exportdef\|nakeddef\|defpython\)\>\s*+\?\s*\%(\%(bool\|int\|double\|char\|string\)\>\s*\)\?\K\k*/ contains=tlDirective,tlType,tlMacro
syntax match tlDefinition /@\s*let\>\s*\%(\%(bool\|int\|double\|char\|string\)\>\s*\)\?\K\k*/ contains=tlDirective,tlType,tlMacro
syntax match tlDollarDefinition /@\$\s*\K\k*/
syntax match tlMacro /\K\k*$/ contained
syntax match tlType /\<\%(bool\|int\|double\|char\|string\)\>/ contained
syntax match tlPaste /@@/
syntax match tlOperator /@[(\[]/
syntax match tlDirectiveComment +@//.*$+
syntax region tlDirectiveComment start=+@/\*+ end=+\*/+

highlight default link tlString String
highlight default link tlRawString String
highlight default link tlBackQuoted String
highlight default link tlEscape SpecialChar
highlight default link tlBadEscape Error
highlight default link tlDollar Identifier
highlight default link tlNumber Number
highlight default link tlComment Comment
highlight default link tlDirective Define
highlight default link tlConditional Conditional
highlight default link tlRepeat Repeat
highlight default link tlInclude Include
highlight default link tlAssert Exception
highlight default link tlDefinition Function
highlight default link tlDollarDefinition Define
highlight default link tlMacro Function
highlight default link tlType Type
highlight default link tlPaste Operator
highlight default link tlOperator Operator
highlight default link tlDirectiveComment SpecialComment

let b:current_syntax = 'tl'
