#: title copies a tape-image file, block for block, to a tape or to several at once
#: needs input FILE the file to read
#: needs output DRIVES the tape drive or drives to write
include parts/all.qs
include parts/position.qs

patience 0
expect file ${input} exists else "there is no file \"${input}\""
patience 2
press main.image-copy
answer-file ${input}
press copy.input-disk
press copy.output-tape
include parts/output-drives.qs
include parts/copy.qs
include parts/checks.qs
expect text copy.status "Complete" else "the copy failed"
quit
