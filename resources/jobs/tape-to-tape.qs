#: title copies tapes, block for block, to a tape or to several at once
#: needs input DRIVE the tape drive to read
#: needs output DRIVES the tape drive or drives to write
#: takes filemarks NUMBER 2 how many filemarks in a row end a tape
#: takes concatenate no|yes no whether only the first file of each tape is copied, one behind the other
#: takes one-for-one no|yes no whether each input tape gets an output tape of its own
include parts/all.qs
include parts/next-tape.qs
include parts/next-output.qs
include parts/position.qs

press main.image-copy
press copy.parameters
type unformatted.eof-count ${filemarks}
when concatenate=yes
  press unformatted.concatenate
end
when one-for-one=yes
  press unformatted.one-for-one
end
press unformatted.ok
press copy.input-tape
include parts/input-drive.qs
press copy.output-tape
include parts/output-drives.qs
include parts/copy.qs
include parts/checks.qs
expect text copy.status "Complete" else "the copy failed"
quit
