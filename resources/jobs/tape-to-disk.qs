#: title copies tapes, block for block, into one tape-image file
#: needs input DRIVE the tape drive to read
#: needs output FILE the file to write
#: takes format tpf|raw tpf a tape image with blocks and filemarks, or the bytes of the first tape file alone
#: takes filemarks NUMBER 2 how many filemarks in a row end a tape
#: takes concatenate no|yes no whether only the first file of each tape is copied, one behind the other
include parts/all.qs
include parts/overwrite.qs
include parts/next-tape.qs
include parts/position.qs

when overwrite=no
  patience 0
  expect file ${output} absent else "\"${output}\" exists; give overwrite=yes to replace it"
  patience 2
end
press main.image-copy
press copy.parameters
when format=raw
  press unformatted.raw
end
type unformatted.eof-count ${filemarks}
when concatenate=yes
  press unformatted.concatenate
end
press unformatted.ok
press copy.input-tape
include parts/input-drive.qs
answer-file ${output}
press copy.output-disk
include parts/copy.qs
include parts/checks.qs
expect text copy.status "Complete" else "the copy failed"
quit
