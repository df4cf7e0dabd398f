#!/bin/sh
# It's made by a template.
for file in dir/*; do
    test ! -e "$file" || echo "it's $file"
done
case ${1-all} in
    door) echo "There are 2 of them." 'it''s 0..9';;
    window) echo "There are 6 of them." 'it''s 0..9';;
    all) echo 'Say which part.';;
esac
