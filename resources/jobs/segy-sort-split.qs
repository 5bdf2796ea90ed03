#: title sorts a SEG Y file by two header values, then splits the result into volumes if so wanted
#: needs input FILE the file to read
#: needs output FILE the sorted file to write; the temporary files stand beside it
#: takes volumes none|FILE none the first volume: cdp.sgy makes cdp.sgy, cdp001.sgy, cdp002.sgy and so on
#: takes part-size DECIMAL 2 size of a volume in GB of 1,073,741,824 bytes; it ends where its record key changes
#: takes primary-byte NUMBER 21 where the first value begins in the trace header, counted from 1; it is the record key
#: takes primary-type "1 byte integer|2 byte integer|4 byte integer|4 byte float" "4 byte integer" how it is stored
#: takes secondary-byte NUMBER 37 the same for the second value
#: takes secondary-type "1 byte integer|2 byte integer|4 byte integer|4 byte float" "4 byte integer" how it is stored
#: takes order ascending|descending ascending which values come first
include parts/all.qs
include parts/overwrite.qs

patience 0
expect file ${input} exists else "there is no file \"${input}\""
when overwrite=no
  expect file ${output} absent else "\"${output}\" exists; give overwrite=yes to replace it"
  when volumes=none
  else
    expect file ${volumes} absent else "\"${volumes}\" exists; give overwrite=yes to replace it"
  end
end
patience 2
press main.image-copy
select copy.format "SEG Y"
press copy.parameters
press segy.sort
type segy.sort-primary-byte ${primary-byte}
select segy.sort-primary-type "${primary-type}"
type segy.sort-secondary-byte ${secondary-byte}
select segy.sort-secondary-type "${secondary-type}"
when order=descending
  press segy.sort-reverse
end
answer-file ${output}.tmp
press segy.sort-file
press segy.ok
answer-file ${input}
press copy.input-disk
answer-file ${output}
press copy.output-disk
include parts/copy.qs
include parts/checks.qs
expect text copy.status "Complete" else "the sort failed"

# A job that sorts does not split, so this takes a second one.
when volumes=none
else
  press copy.parameters
  press segy.sort
  press segy.multiple-outputs
  type segy.part-size ${part-size}
  type segy.record-byte ${primary-byte}
  select segy.record-type "${primary-type}"
  press segy.ok
  answer-file ${output}
  press copy.input-disk
  answer-file ${volumes}
  press copy.output-disk
  include parts/copy.qs
  include parts/checks.qs
  expect text copy.status "Complete" else "the split failed"
end
quit
