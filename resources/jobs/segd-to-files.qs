#: title splits SEG D tapes into their field files, one disk file each
#: needs input DRIVE the tape drive to read
#: needs output FOLDER the folder for the files and for SegdCopy.txt, the job's log; it must be there
#: takes name TEXT field what the files' names begin with: field_00101.sgd
#: takes number-by field-file|position field-file what the number in a name is: the field file's, or its place in the job
include parts/all.qs
include parts/overwrite.qs
include parts/next-tape.qs
include parts/position.qs

patience 0
expect file ${output} exists else "there is no folder \"${output}\""
when overwrite=no
  expect no-file ${output}/${name}_*.sgd else "\"${output}\" has files ${name}_*.sgd; give overwrite=yes to replace those that come again"
  expect file ${output}/SegdCopy.txt absent else "\"${output}/SegdCopy.txt\" exists; give overwrite=yes to replace it"
end
patience 2
press main.image-copy
select copy.format "SEG D"
press copy.parameters
when number-by=field-file
  press segd.number-by-field-file
end
type segd.output-name ${name}
answer-file ${output}/SegdCopy.txt
press segd.log-file
press segd.ok
press copy.input-tape
include parts/input-drive.qs
answer-file ${output}
press copy.output-disk
include parts/copy.qs
include parts/checks.qs
expect text copy.status "Complete" else "the copy failed"
quit
