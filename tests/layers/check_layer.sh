#!/usr/bin/env bash
# check_layer.sh COMPILER SRC FOLDERS LAYER [USED_LAYER...]: compiles includes of every header of every layer
# below SRC with the include folders that the file FOLDERS lists. Headers of the layer and of those that it uses
# compile; all others are not found, neither those for other layers nor the private ones. Needs no build.
set -euo pipefail

compiler=$1
src=$2
layer=$4
used=" $layer ${*:5} "
mapfile -t folders < <(sed '/^$/d; s/^/-I/' "$3")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failed=0

# In a folder of its own, where no header lies beside it.
compile() {
    cat >"$scratch/$1.cpp"
    if ! "$compiler" -std=c++20 -fsyntax-only "${folders[@]}" "$scratch/$1.cpp"; then
        failed=1
    fi
}

unseen() {
    printf '#if __has_include("%s")\n#error layer %s can include %s\n#endif\n' "$1" "$layer" "$1"
}

seen_lines=$scratch/seen
unseen_lines=$scratch/unseen
for other in common network core runtime client session; do
    while read -r header; do
        case $used in
        *" $other "*) echo "#include \"$header\"" >>"$seen_lines" ;;
        *) unseen "$header" >>"$unseen_lines" ;;
        esac
        # Those of one platform compile there alone.
    done < <(cd "$src/$other/include" && find . -name '*.h*' ! -name '*_windows.hpp' | sed 's|^\./||')
    # Private headers are found beside the source that includes them, and from nowhere else.
    while read -r header; do
        unseen "$header" >>"$unseen_lines"
        unseen "$other/$header" >>"$unseen_lines"
    done < <(cd "$src/$other" && find . -maxdepth 1 -name '*.h*' | sed 's|^\./||')
done
compile "${layer}_sees" <"$seen_lines"
compile "${layer}_does_not_see" <"$unseen_lines"

# A path through the parent's folder would pass by all of this.
if grep -rnE '#include "\.\./' "$src/$layer"; then
    echo "$layer includes a header by way of its parent folder"
    failed=1
fi

# Nothing checked is nothing held: each layer has headers that it sees and headers that it does not.
if (($(grep -c '#include' "$seen_lines") < 5 || $(grep -c '#error' "$unseen_lines") < 20)); then
    echo "hardly a header was found below $src"
    failed=1
fi
exit "$failed"
