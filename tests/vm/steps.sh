# What the scripts of this folder share, sourced by them: a folder to work in, the lines of a copy, their run.
set -e
dir=$(mktemp -d)
cd "$dir"
mkdir shots
export DIR=$dir

# BUTTON input|output ROW
choose_drive() {
  printf 'press %s\nwait window %s-drive 10\nselect %s-drive.drives %s\npress %s-drive.ok\n' "$1" "$2" "$2" "$3" "$2"
}
# FROM TO in the copy dialog, each the number of a drive or a file of $DIR. There is never a further tape.
copy() {
  case $1 in [01]) choose_drive copy.input-tape input "$1" ;; *) printf 'answer-file $DIR/%s\npress copy.input-disk\n' "$1" ;; esac
  case $2 in [01]) choose_drive copy.output-tape output "$2" ;; *) printf 'answer-file $DIR/%s\npress copy.output-disk\n' "$2" ;; esac
  printf 'wait text copy.status "Ready" 30\npress copy.start\n'
  case $1 in [01]) no_further_tape ;; esac
  printf 'wait text copy.status "Complete" 120\n'
}
no_further_tape() { printf 'wait window input-continue 120\npress input-continue.stop\n'; }
# Plays the script that comes in, and shows what the console said.
play() {
  local status=0
  cat >script
  echo quit >>script
  "$QUARLO_SOURCE/tests/with-display" "$QUARLO_BUILD/quarlo" --script script || status=$?
  cat console.txt
  return "$status"
}
