#!/usr/bin/env bash
# The script of docs/reformat.md, where the program was built and where it is installed: tests/scripts/reformat.sh PROGRAM
set -eu
program=$(realpath "$1")
build=$(dirname "$program")
scripts=$(dirname "$(realpath "$0")")
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"
mkdir -p prefix/bin prefix/lib/quarlo
ln "$program" prefix/bin 2>/dev/null || cp "$program" prefix/bin
cp -r "$build/lib" prefix/lib/quarlo
"$scripts/documents.py" block docs/reformat.md "# line.txt" >reformat.qs
printf '# interval 0.004\n1 2 3\n4 5 6\n' >line.txt

# play PROGRAM MODULES
play() {
  rm -f line.kyr
  timeout 60 "$1" --script reformat.qs
  grep -qxF "Format modules are taken from $2." console.txt
  [ "$("$build/kyrtool" dump line.kyr | grep -c '^trace ')" = 2 ]
}
play "$program" "$build/lib"
play "$dir/prefix/bin/quarlo" "$dir/prefix/lib/quarlo/lib"

# Modules of the user's own take the place of all others.
mkdir lib
cp "$build/lib/ioexample.so" lib
status=0
timeout 60 "$program" --script reformat.qs 2>error || status=$?
[ "$status" = 1 ] && grep -q "No valid output shared objects have been found." error
echo "reformat: all as expected"
