" SPDX-License-Identifier: MIT
" The editor itself takes such files for another language's.
autocmd BufNewFile,BufRead *.tl set filetype=tl
