# Copies the traces of some in-lines of a SEG Y file to another one.
#
#     INPUT=line.sgy LIST=inlines.txt OUTPUT=part.sgy quarlo --script segy-copy.qs
#
# LIST is a text file, an in-line number or a range (10 - 20) a line. OUTPUT must not be there yet.

wait window main 10
press main.image-copy
wait window copy 5
select copy.format "SEG Y"

# What to keep: in-lines stand in bytes 189 to 192 of the trace header.
press copy.parameters
wait window segy 5
press segy.range-limit
press segy.limit-by-list
press segy.limit-settings
wait window segy-list 5
press segy-list.inclusion
answer-file $LIST
press segy-list.choose-file
wait text segy-list.path "?*/*" 5
type segy-list.primary-byte 189
select segy-list.primary-type "4 byte integer"
press segy-list.ok
press segy.ok

answer-file $INPUT
press copy.input-disk
wait text copy.input-name "?*" 5
answer-file $OUTPUT
press copy.output-disk
wait enabled copy.start 5
press copy.start
wait console "SEG Y copy ended at *" 86400
expect text copy.status "Complete"
expect no-line console "*\\*\\**"
quit
