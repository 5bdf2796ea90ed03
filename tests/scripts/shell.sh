#!/usr/bin/env bash
# A walk through the menus and the dialogs around tapes on two virtual drives: tests/scripts/shell.sh PROGRAM
# With QUARLO_SHOTS naming a folder, each dialog's picture is put there.
set -eu
program=$(realpath "$1")
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
shots=${QUARLO_SHOTS:-$dir}
mkdir -p "$shots" "$dir/drives" "$dir/work"
export SHOTS="$shots" KYRHOME="$dir/work"

# A cartridge: three blocks of 4 bytes, a filemark, one block, two filemarks.
block='\004\000\000\000data\004\000\000\000'
mark='\000\000\000\000'
printf "$block$block$block$mark$block$mark$mark" >"$dir/drives/first.tap"
printf 'vendor = ACME\nmodel = REEL 100\nid = 4\ncartridge = first.tap\n' >"$dir/drives/first.drive"
printf 'vendor = ACME\nmodel = REEL 200 with a name that is rather long\nid = 5\n' >"$dir/drives/second.drive"
# A relative path begins where the program is started, not in KYRHOME.
cd "$dir"
export QUARLO_VIRTUAL_DRIVES=drives

cat >"$dir/script" <<'SCRIPT'
wait window main 10
expect line console "I/O will be limited to 32k bytes per block."
expect menu-checked console
expect menu-disabled rewind
expect menu-enabled copy
screenshot main "$SHOTS/main.png"

# Companion programs that were not named say so.
menu companion-2
wait window note-box 5
screenshot note-box "$SHOTS/note.png"
press note-box.ok

# The first file box shows the folder of the program.
press main.image-copy
press copy.input-disk
wait window file-box 5
expect like file-box.folder "*/work"
press file-box.cancel
close copy

# The main dialog and the console go and come back.
close main
wait no-window main 5
menu main-window
wait window main 5
menu console
expect menu-unchecked console
expect no-window console
menu console
expect window console

menu about
wait window about 5
expect text about.version 2.3.13
screenshot about "$SHOTS/about.png"
press about.ok

# Tape control: no drive, then one.
menu tape-control
wait window tape-control 5
expect text tape-control.drive "No drive selected"
expect disabled tape-control.rewind
screenshot tape-control "$SHOTS/tape-control-empty.png"
press tape-control.select-drive
wait window input-drive 5
expect rows input-drive.drives 2
expect row input-drive.drives "  0:4   ACME REEL 100"
expect disabled input-drive.wait
screenshot input-drive "$SHOTS/input-drive.png"
press input-drive.unload-at-end
press input-drive.auto-load
type input-drive.wait -15
press input-drive.override-model
expect text input-drive.wait 9
screenshot input-drive "$SHOTS/input-drive-all.png"
press input-drive.auto-load
press input-drive.override-model
select input-drive.drives "*0:4 *REEL 100*"
press input-drive.ok
wait no-window input-drive 5
expect text tape-control.drive "ACME REEL 100"
expect text tape-control.largest-block "32 KB"
expect menu-enabled rewind
type tape-control.block-count 2
mark console
press tape-control.skip-blocks
wait line console "2 blocks skipped forward." 5
screenshot tape-control "$SHOTS/tape-control.png"

# Spacing from the menu refreshes the dialog.
menu skip-files
wait window skip-files 5
expect text skip-files.count 1
screenshot skip-files "$SHOTS/skip-files.png"
press skip-files.ok
wait no-window skip-files 5
expect text tape-control.file-number 1
menu rewind
expect text tape-control.file-number 1
expect text tape-control.block-number 1
menu skip-records
wait window skip-records 5
screenshot skip-records "$SHOTS/skip-records.png"
press skip-records.cancel
menu unload
expect text tape-control.drive "No drive selected"
expect menu-disabled rewind
press tape-control.close
wait no-window tape-control 5

# Error options and output drives are reached from the copy dialog.
press main.image-copy
wait window copy 5
screenshot copy "$SHOTS/copy.png"
press copy.error-options
wait window error-options 5
run "for title in Copy Console 'Error options'; do xprop -name \"\$title\"; done >$SHOTS/properties"
screenshot error-options "$SHOTS/error-options.png"
press error-options.stop-on-error
expect checked error-options.stop-on-error
key error-options Escape
wait no-window error-options 5
press copy.output-tape
wait window output-drive 5
screenshot output-drive "$SHOTS/output-drive.png"
press output-drive.multiple
expect visible output-drive.several-drives
expect hidden output-drive.drives
screenshot output-drive "$SHOTS/output-drive-several.png"
press output-drive.cancel
wait no-window output-drive 5
close copy

menu quit
SCRIPT
xev -root -event property >"$dir/root" &
watcher=$!
trap 'kill $watcher 2>/dev/null; rm -rf "$dir"' EXIT
DESKTOP_STARTUP_ID='menu "1"' "$program" --script "$dir/script"

# What the desktop is told: whose the windows are, in one group, their kind and icon, and that the program has started.
for told in 'WM_CLASS.*"quarlo", "Quarlo"' '_NET_WM_PID' 'group leader: 0x' 'Icon .16 x 16.'; do
  [ "$(grep -Ec "$told" "$shots/properties")" = 3 ] || { echo "not of all windows: $told"; exit 1; }
done
[ "$(grep -c '_TYPE_DIALOG' "$shots/properties")" = 1 ] && grep -q '_NET_STARTUP_INFO_BEGIN' "$dir/root"

# The options that need no display, and those that are refused.
[ "$("$program" --version)" = "quarlo 2.3.13" ]
"$program" --help | grep -q -- '--script FILE'
for wrong in --no-such-option stray -display; do
  status=0
  "$program" "$wrong" 2>"$dir/error" || status=$?
  [ "$status" = 2 ] && [ "$(wc -l <"$dir/error")" = 1 ] || { echo "$wrong: status $status"; exit 1; }
done

# What cannot be printed is a failure.
echo 'print "half way"' >"$dir/prints"
for shown in --version --help "--script $dir/prints"; do
  status=0
  # shellcheck disable=SC2086
  "$program" $shown >/dev/full 2>"$dir/error" || status=$?
  [ "$status" = 1 ] && grep -qx "quarlo: standard output: .*" "$dir/error" || { echo "$shown: status $status"; exit 1; }
done
echo "shell: all as expected"
