#!/usr/bin/env bash
# Output that may not grow as it should: tests/scripts/file_limit.sh PROGRAM
# The job fails in its own words and comes to its end; the program lives on.
set -eu
program=$(realpath "$1")
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
mkdir "$dir/home"
export KYRHOME="$dir/home" DIR="$dir"
cd "$dir"
python3 - <<'PYTHON'
import struct
binary = bytearray(400)
struct.pack_into(">HHHHH", binary, 16, 2000, 0, 250, 0, 1)
open("in.sgy", "wb").write(b"\x40" * 3200 + binary + bytes(1240) * 600)
PYTHON
cat >limit.qs <<'SCRIPT'
wait window main 10
press main.image-copy
wait window copy 5
select copy.format "SEG Y"
answer-file $DIR/in.sgy
press copy.input-disk
answer-file $DIR/out.sgy
press copy.output-disk
wait enabled copy.start 5
press copy.start
wait console "SEG Y copy ended at *" 30
expect text copy.status "Failed"
expect line console "  *** Error writing to disk file \"out.sgy\": File too large."
quit
SCRIPT
# 300 KB for each file.
(ulimit -f 300; exec "$program" --script limit.qs) || { cat home/console.txt; exit 1; }
size=$(stat -c %s out.sgy)
[ $(((size - 3600) % 1240)) = 0 ] && [ "$size" -gt 290000 ] || { echo "out.sgy has $size bytes" >&2; exit 1; }
