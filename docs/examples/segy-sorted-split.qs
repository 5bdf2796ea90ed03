# Sorts a SEG Y file by CDP and offset, then splits it into files of about PART_SIZE GB that end where a CDP ends.
#
#     INPUT=line.sgy SORTED=sorted.sgy VOLUMES=cdp.sgy PART_SIZE=2 quarlo --script segy-sorted-split.qs
#
# The volumes are cdp.sgy, cdp001.sgy, cdp002.sgy and so on. A job that sorts does not split, so this takes two.
# SORTED and VOLUMES must not be there yet. The temporary files stand beside SORTED.

wait window main 10
press main.image-copy
wait window copy 5
select copy.format "SEG Y"

# First job: sort. CDP number in bytes 21 to 24, offset in bytes 37 to 40.
press copy.parameters
wait window segy 5
press segy.sort
type segy.sort-primary-byte 21
select segy.sort-primary-type "4 byte integer"
type segy.sort-secondary-byte 37
select segy.sort-secondary-type "4 byte integer"
answer-file $SORTED.tmp
press segy.sort-file
wait text segy.sort-path "*.tmp" 5
press segy.ok
answer-file $INPUT
press copy.input-disk
answer-file $SORTED
press copy.output-disk
wait enabled copy.start 10
press copy.start
wait console "SEG Y copy ended at *" 86400
expect text copy.status "Complete"

# Second job: split.
press copy.parameters
wait window segy 5
press segy.sort
press segy.multiple-outputs
type segy.part-size $PART_SIZE
type segy.record-byte 21
select segy.record-type "4 byte integer"
press segy.ok
answer-file $SORTED
press copy.input-disk
answer-file $VOLUMES
press copy.output-disk
wait enabled copy.start 10
press copy.start
wait console "SEG Y copy ended at *" 86400
expect text copy.status "Complete"
expect no-line console "*\\*\\**"
quit
