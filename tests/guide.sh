#!/bin/bash
# The guides can be built, and what lies in docs/guide is what their sources give. In a copy in which
# something is wrong nothing is built.
set -eu

project=$(cd "$(dirname "$0")/.." && pwd)
guide=$project/docs/guide
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# shellcheck source=tests/verdicts.bash
. "$project/tests/verdicts.bash"

# What a page would load, other pages aside.
loaded_by() {
    grep -oE '(src|href)="[^"]{0,60}' "$1" | grep -vE '"(#|data:image/png;base64,|guide-\w+\.html)' ||
        true
}

# refused WHY COMMAND...: a copy in which the command makes a fault is not built, for that reason.
refused() {
    local why=$1 reasons
    shift
    rm -rf "$scratch/copy"
    mkdir -p "$scratch/copy/docs" "$scratch/copy/resources" "$scratch/copy/frame"
    cp -r "$guide" "$scratch/copy/docs/"
    cp -r "$project/resources/language" "$scratch/copy/resources/"
    cp "$project/frame/Pages.cpp" "$scratch/copy/frame/"
    cd "$scratch/copy/docs/guide"
    "$@"
    if reasons=$(./build-guide markdown "$scratch/refused" 2>&1); then
        report "refused: $why" "it was built"
    elif [[ $reasons == *"$why"* ]]; then
        report "refused: $why" ""
    else
        report "refused: $why" "$reasons"
    fi
}

"$guide/build-guide" markdown "$scratch/markdown"
report "the Markdown is up to date" "$(cd "$scratch/markdown" && for file in *; do
    cmp "$file" "$guide/$file" 2>&1 || true
done)"

"$guide/build-guide" html "$scratch/html"
for language in english chinese; do
    page=$scratch/html/guide-$language.html
    report "the $language page needs no other file" "$(loaded_by "$page")"
    shown=$(grep -o '<img ' "$page" | wc -l)
    taken=$(find "$guide/pictures" -name "*-$language.png" | wc -l)
    report "the $language page has every picture" "$([ "$shown" -eq "$taken" ] || echo "$shown, not $taken")"
done

refused "source/operator-english.md: there is no text Label_1000099" \
    sed -i 's/Label_1000014/Label_1000099/' source/operator-english.md
refused "source/operator-chinese.md: there is no text Label_1000014" \
    sed -i 's/Label_1000014=/Label_1000099=/' ../../resources/language/chinese.ini
refused "source/operator-chinese.md: there is no pictures/basic-bad-chinese.png" \
    rm pictures/basic-bad-chinese.png
refused "source/operator-chinese.md: pictures/basic-bad-english.png is in another language" \
    sed -i 's/basic-bad-chinese/basic-bad-english/' source/operator-chinese.md
refused "pictures/spare-english.png: in no guide" \
    cp pictures/home-english.png pictures/spare-english.png
refused "source/operator-*.md: not the same in both languages" \
    sed -i '/^| \*\*{{Label_1000025}}/d' source/operator-english.md
refused "operator-chinese: no picture of the page printer" \
    sed -i 's/"camera"/"printer"/' ../../frame/Pages.cpp
refused "source/operator-english.md: there is no chapter #databases" \
    sed -i 's/(#database)/(#databases)/' source/operator-english.md
[ "$failures" -eq 0 ]
