# Splits a SEG D tape into its field files, one disk file each.
#
#     OUTPUT=line-1201 quarlo --script segd-split-tape.qs
#
# Takes the tape in the first drive. OUTPUT is a directory that is there; its files are named field_00101.sgd for field file
# 101 and so on, and the job's log, SegdCopy.txt, stands beside them. Traces longer than 32 KB want ST_BUFFER=128 or more.

wait window main 10
press main.image-copy
wait window copy 5
select copy.format "SEG D"
press copy.parameters
wait window segd 5
press segd.number-by-field-file
type segd.output-name "field"
answer-file $OUTPUT/SegdCopy.txt
press segd.log-file
wait text segd.log-path "*/SegdCopy.txt" 5
press segd.ok

press copy.input-tape
wait window input-drive 5
select input-drive.drives 0
press input-drive.ok

answer-file $OUTPUT
press copy.output-disk
wait enabled copy.start 5

# One tape; for a stack of them, automatic loading is an option of the drive.
answer input-continue.stop
press copy.start
wait console "SEG D copy ended at *" 86400
expect text copy.status "Complete"
expect no-line console "*\\*\\**"
quit
