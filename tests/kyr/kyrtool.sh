#!/bin/bash
# kyrtool from the outside: datasets made, shown, marked and refused.  kyrtool.sh PROGRAM
set -e
tool=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
fails() {  # STATUS COMMAND ...
  local wanted=$1 status=0
  shift
  "$@" > out 2> err || status=$?
  [ $status = "$wanted" ] || { echo "status $status: $*"; cat out err; exit 1; }
}
says() { grep -qxF -- "$1" "$2" || { echo "no \"$1\" in:"; cat "$2"; exit 1; }; }
hints() { grep -qF -- "$1" err || { echo "no \"$1\" in:"; cat err; exit 1; }; }

cat > a.txt <<'TEXT'
type stack-2d
records 2
traces-per-record 3
samples 4
sample-interval 0.004
min-field-file 901
120 7
trace 1 1 field-file=901 channel=1 kill-flag=16
0.5
-1
1e-30
nan
# this one lacks two samples
trace 2 3 source-location=12.5 offset=null 150=0.25
-inf
3.1415927
TEXT
"$tool" make a.kyr a.txt
"$tool" dump a.kyr > b.txt
says "min-field-file 901" b.txt
says "120 7" b.txt
says "trace 1 1 field-file=901 channel=1 kill-flag=16" b.txt
says "trace 2 3 source-location=12.5 offset=null 150=0.25" b.txt
says "# trace 1 2 was never written" b.txt
says "3.1415927" b.txt
says "1e-30" b.txt
says "sample-interval 0.004" b.txt
"$tool" make b.kyr b.txt
"$tool" dump b.kyr > c.txt
cmp b.txt c.txt
"$tool" info a.kyr > out
says "state closed properly" out
says "bytes-per-trace 840" out
"$tool" check a.kyr > out
for line in "live 1" "dead 1" "never-written 4" "lost 0"; do says "$line" out; done

"$tool" kill b.kyr 1-2 2-3 geometry
"$tool" kill b.kyr 1 2 processing
"$tool" set b.kyr all 3 field-file=77 receiver-location=-0.5
"$tool" revive b.kyr 1 1
"$tool" property b.kyr sample-interval=0.001 max-offset=5000
"$tool" headers b.kyr 1 > out
says "trace 1 1 field-file=901 channel=1" out
says "trace 1 2 kill-flag=32" out
says "trace 1 3 receiver-location=-0.5 field-file=77 kill-flag=16" out
says "sample-interval 0.001" out
says "max-offset 5000" out
"$tool" dump b.kyr 2 3 > out
says "3.1415927" out
says "trace 2 3 source-location=12.5 receiver-location=-0.5 field-file=77 kill-flag=16 offset=null 150=0.25" out

printf '\0\0\200\77\0\0\0\300\0\0\0\0\0\0\200\277\0\0\0\0\0\0\0\100' > f.raw   # 1 -2 0 -1 0 2
"$tool" raw r.kyr f.raw 1 2 3 0.002
"$tool" dump r.kyr 1 2 > out
says "trace 1 2 field-file=1 trace-number=2 channel=2" out
[ "$(tail -3 out | tr '\n' ' ')" = "-1 0 2 " ] || { cat out; exit 1; }
fails 2 "$tool" raw s.kyr f.raw 1 1 3 0.002
hints "more floats"
fails 2 "$tool" raw s.kyr f.raw 2 2 3 0.002
hints "too few floats for trace 1 of record 2"
fails 2 "$tool" raw r.kyr f.raw 1 2 3 0.002
hints "exists already"
fails 2 "$tool" raw s.kyr f.raw 1 2 3 0.002 bricks
fails 2 "$tool" raw s.kyr none.raw 1 2 3 0.002
[ ! -e s.kyr ]

# Recordings: signals add up in a trace; records are numbered on through all groups.
cat > signals.txt <<'TEXT'
traces 5
samples 8
interval 0.125
record 901
all sine 2 1 phase 90 harmonics -20
2-5/3 dc 0.5
3,4 dead geometry
4 set shot=1 kill-flag=32
record 11-15 halving
odd dc 8
2 square 1 2 down 20
4 noise 3
5 impulse 1 8
record 16 level -2
even noise 3 seed 2
TEXT
fails 2 "$tool" record s.kyr signals.txt
hints "signals.txt: line 8: no such property: shot"
sed -i s/shot/source-line/ signals.txt
"$tool" record s.kyr signals.txt
samples() { "$tool" dump s.kyr "$1" "$2" | sed '1,/^trace [0-9]/d' | tr '\n' ' '; }
[ "$(samples 1 2 | cut -d' ' -f1,2,5)" = "2.5 1.7142136 -1.5" ]
[ "$(samples 5 1 | cut -d' ' -f8) $(samples 6 5)" = "-4 2 2 2 2 2 2 2 2.25 " ]
[ "$(samples 3 2)" = "-0.1 -0.1 0.1 0.1 -0.1 -0.1 0.1 0.1 " ]
[ "$(samples 7 2 | cut -d' ' -f1-8 | tr ' ' '\n' | awk '{ s += $1; q += $1 * $1 } END { printf "%.4f %.3f", s + 1, q }')" = "1.0000 288.000" ]
[ "$(samples 7 2)" != "$(samples 7 4)" ]
"$tool" headers s.kyr all 4 > out
says "trace 1 4 source-line=1 field-file=901 trace-number=4 channel=4 kill-flag=32" out
says "trace 7 4 field-file=16 trace-number=34 channel=4" out
"$tool" record again.kyr - < signals.txt
cmp <("$tool" dump s.kyr) <("$tool" dump again.kyr)
rm s.kyr
bad() {
  printf '%s\n' $'traces 2\nsamples 8\ninterval 0.001\nrecord 901' "$2" > bad.txt
  fails 2 "$tool" record bad.kyr bad.txt
  hints "$1"
  [ ! -e bad.kyr ]
}
bad "line 5: no traces of this recording: 1-3" "1-3 dc 1"
bad "line 5: no traces of this recording: 2-1" "1,2-1 dc 1"
bad "line 5: no volts: nan" "all dc nan"
bad "line 5: no sample of this recording: 9" "all impulse 1 9"
bad "line 5: noise knows no harmonics" "all noise 1 harmonics -20"
bad "line 5: no dB: 1e30" "all sine 1 2 harmonics 1e30"
bad "line 5: no field files: 1-2000" "record 1-2000 doubling"
bad "line 5: not understood: loud" "record 5 level 2 loud"
bad "line 5: no such kind of kill: gently" "all dead gently"

refuse() { printf '%s\n' "$2" > bad.txt; fails 2 "$tool" make bad.kyr bad.txt; hints "$1"; [ ! -e bad.kyr ]; }
refuse "no dataset in the text" "# nothing"
refuse "line 1: \"type\" has to come first" "records 3"
refuse "line 1: no first line with a known type" "type sort"
refuse "line 2: no such property: colour" $'type radar\ncolour 3'
refuse "line 2: records=-2: refused" $'type radar\nrecords -2'
refuse "bad.txt: line 2: no whole number: records=two" $'type radar\nrecords two'
refuse "line 2: not understood: records 3 4" $'type radar\nrecords 3 4'
refuse "line 2: total-traces=4: follows from the other counts" $'type radar\ntotal-traces 4'
refuse "line 5: no number: offset=1e99" $'type radar\nrecords 1\ntraces-per-record 1\nsamples 1\ntrace 1 1 offset=1e99'
refuse "trace 1 2: no such record" $'type radar\nrecords 1\ntraces-per-record 1\nsamples 1\ntrace 1 2'
refuse "line 7: too many samples" $'type radar\nrecords 1\ntraces-per-record 1\nsamples 1\ntrace 1 1\n5\n6'

# What stands at the output's name is neither written over nor removed.
mkdir dir.kyr
mkfifo pipe.kyr
ln -s nowhere link.kyr
for there in dir.kyr pipe.kyr link.kyr; do
  fails 2 "$tool" make $there a.txt
  hints "$there: exists already"
  fails 2 "$tool" raw $there f.raw 1 2 3 0.002
done
[ -d dir.kyr ] && [ -p pipe.kyr ] && [ -L link.kyr ] && [ ! -e nowhere ]

# The output's failures are the output's, also at the limit of a file's size; what came into being goes again.
fails 2 "$tool" make none/x.kyr a.txt
hints "none/x.kyr: No such file"
head -c 40000 /dev/zero > zeros.raw
(ulimit -f 8; fails 2 "$tool" raw big.kyr zeros.raw 10 10 100 0.002; hints "File too large"; hints "big.kyr")
[ ! -e big.kyr ]
(ulimit -f 5; fails 2 "$tool" make big.kyr a.txt; hints "big.kyr: cannot be written")
[ ! -e big.kyr ]
"$tool" make sparse.kyr2 a.txt
(ulimit -f 4; fails 2 "$tool" kill sparse.kyr2 all all)
for verb in info check; do
  status=0
  "$tool" $verb b.kyr > /dev/full 2> err || status=$?
  [ $status = 2 ]
  hints "standard output: No space left on device"
done
"$tool" make wide.kyr - <<< $'type radar\nrecords 1\ntraces-per-record 1\nsamples 200000000'
if (ulimit -v 400000; "$tool" info wide.kyr > out 2>&1); then
  (ulimit -v 400000; fails 2 "$tool" check wide.kyr; hints "wide.kyr: not enough memory")
else
  echo "want of memory skipped: a sanitizer needs the address space"
fi

# Senseless values change nothing; those of a trace that nobody wrote make it one that is there, but dead.
cp b.kyr b.before
for bad in channel=1.5 channel=99999999999 "channel= 1" channel=1x offset=1e99 kill-flag=1 channel=-2147483648; do
  fails 2 "$tool" set b.kyr 1 1 field-file=5 "$bad"
  hints "$bad"
done
for bad in total-traces=6 records=2 largest-record=3 min-field-file=0.5 sample-interval=1e99; do
  fails 2 "$tool" property b.kyr max-field-file=5 "$bad"
  hints "$bad"
done
cmp b.kyr b.before
"$tool" set b.kyr 2 1 channel=4
"$tool" headers b.kyr 2 1 > out
says "trace 2 1 channel=4 kill-flag=64" out

# A dataset that was cut off: told, shown as far as it goes, not changed.
size=$(stat -c %s a.kyr)
head -c $((size - 1)) a.kyr > cut.kyr
fails 1 "$tool" info cut.kyr
says "state not complete" out
hints "is not complete: at most 5 of 6 traces"
fails 1 "$tool" dump cut.kyr
says "# trace 2 3 is lost" out
fails 2 "$tool" kill cut.kyr all all
fails 2 "$tool" property cut.kyr sample-interval=1
head -c $((size - 1)) a.kyr | cmp - cut.kyr
printf X | dd of=a.kyr bs=1 seek=100 conv=notrunc 2> /dev/null
fails 2 "$tool" info a.kyr
hints "a.kyr: its header is damaged"
fails 2 "$tool" info f.raw
hints "f.raw: it is no dataset"
fails 2 "$tool" info none.kyr
hints "No such file"
fails 2 "$tool" headers b.kyr 3
fails 2 "$tool" set b.kyr 1 1 channel
fails 2 "$tool" kill b.kyr 1 1 gently
fails 2 "$tool" sing
fails 2 "$tool"
