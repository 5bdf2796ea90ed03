#!/usr/bin/env bash
# What the authors of modules are promised, with an installed Quarlo and no sources of it: authors.sh BUILD JOBS_TESTS
# The public headers need nothing that is not installed; the guide's loop in C and the example in C++ are built by the
# guide's own commands, and run. What a module calls the installed program has, and every call of the toolkit.
set -euo pipefail
source=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "$1" && pwd)
jobs_tests=$(realpath "$2")
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
cmake --install "$build" --prefix "$home/prefix" >"$home/log"
include=$home/prefix/include/quarlo
mkdir "$home/lib"
cd "$home"
ln -s "$include" QUARLO-SOURCE

(cd "$include" && find . -name '*.h' -printf '#include "%P"\n' | sort) >all.cpp
g++ -std=c++20 -Wall -Wextra -Werror -fsyntax-only -I "$include" all.cpp
if [ -e "$include/quarlo/tapelib/driver" ] || [ -e "$include/libkyr/slotstore.h" ]; then
  echo "headers that are not public are installed" >&2
  exit 1
fi

cp "$source/plugins/ioexample.cpp" iomine.cpp
{
  printf '#include <string.h>\n#include "plugins/kyrmodule.h"\n'
  printf 'void GetTuDllIdentifier(char* name, int* id) {\n  strcpy(name, "Mine");\n  *id = 90;\n}\n'
  sed -n '/^    int TMainPhase/,/^    }/p' "$source/docs/format-modules.md"
} >iomine.c
for name in ioexample iocopy; do
  suffix=$([ $name = ioexample ] && echo cpp || echo c)
  command=$(grep -E "^    g(\+\+|cc) .* iomine\.$suffix " "$source/docs/format-modules.md")
  KYRHOME=$home bash -c "$command"
  mv lib/iomine.so lib/$name.so
done
cp "$build/lib/iokyr.so" lib/
# The example as it would be with a longer item of dialogs, and from before modules told what they were built with.
for name in iolonger iosilent; do
  cp -r "$include" $name
  case $name in
    iolonger) sed -i 's/const char\* keys = nullptr;/& int more = 0;/' $name/xvt/resource.h ;;
    iosilent) sed -i '/const KyrModuleStamp kyrModuleStamp/d; s/\[\[gnu::abi_tag.*\]\]//' \
      $name/plugins/kyrmodule.h $name/xvt/resource.h $name/quarlo/tapelib/dialogs/blockdialog.h ;;
  esac
  g++ -std=c++20 -shared -fPIC -fvisibility=hidden -I $name iomine.cpp -o lib/$name.so
done

nm -D --defined-only "$home/prefix/bin/quarlo" | sed 's/.* //' | sort >has
nm -D --undefined-only lib/ioexample.so lib/iocopy.so | sed -n 's/^ *U //p' | grep -vE '@|^(_ZNSt|_ZSt|__|_Unwind)' | sort -u >calls
grep -oE '\bxvt_[a-z_]+ *\(' "$include/xvt/xvt.h" | tr -d ' (' | sort -u >toolkit
if [ -n "$(comm -23 calls has)" ] || [ -n "$(comm -23 toolkit <(c++filt <has | sed 's/(.*//' | sort))" ]; then
  echo "the program lacks:" "$(comm -23 calls has)" "$(comm -23 toolkit <(c++filt <has | sed 's/(.*//' | sort))" >&2
  exit 1
fi

QUARLO_AUTHORS_MODULES=$home/lib/ "$jobs_tests" --gtest_filter='BuiltModuleTest.*' >log || { cat log; exit 1; }
! grep -q SKIPPED log
