#!/bin/bash
# Runs a script of this folder in a virtual machine that has two genuine tape drives.
#   tests/vm/run.sh BENCH SCRIPT BUILD
# BENCH: the folder with runvm.sh and its .vm (made by its setup.sh); SCRIPT: a script beside this one; BUILD: the build
# folder whose programs are run. The machine sees the host's files read-only under the same paths.
set -e
here=$(cd "$(dirname "$0")" && pwd)
bench=$(cd "$1" && pwd)
build=$(cd "$3" && pwd)
out=${D:-$bench/.vm}/out
printf 'export QUARLO_SOURCE=%q QUARLO_BUILD=%q\n. %q\n' "$(dirname "$(dirname "$here")")" "$build" "$here/$2" > "$out/quarlo.sh"
cd "$bench"
exec ./runvm.sh /vmout/quarlo.sh
