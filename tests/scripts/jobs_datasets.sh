#!/usr/bin/env bash
# The jobs on datasets, as the documents play them: tests/scripts/jobs_datasets.sh PROGRAM
set -eu
build=$(dirname "$(realpath "$1")")
scripts=$(dirname "$(realpath "$0")")
export PATH=$build:$PATH
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"

mkdir line-1201
for name in a b; do kyrtool raw line-1201/$name.kyr <(head -c 48 /dev/urandom) 2 3 2 0.004; done
cp line-1201/*.kyr .
kyrtool kill b.kyr 1 2
"$scripts/documents.py" block docs/merge.md "quarlo --job" >commands
timeout 100 bash -eu commands >log
diff <(for name in a b; do kyrtool dump line-1201/$name.kyr; done | grep -v '[=a-z]') <(kyrtool dump line.kyr | grep -v '[=a-z]')
[ "$(kyrtool headers stack.kyr | grep -c trace-number)" = 11 ]
status=0
echo no >line-1201/c.kyr
timeout 60 quarlo --job merge folder=line-1201 output=new.kyr >log 2>error || status=$?
[ "$status" = 1 ] && grep -q 'omitted from merge' error
echo "jobs_datasets: all as expected"
