#: title copies SEG Y traces: all of them, or those that a list or a polygon keeps
#: needs input DRIVE|FILE the tape drive or the file to read
#: needs output DRIVES|FILE the tape drive or drives, or the file to write
#: takes inputs one|separate|joined one with "separate" or "joined" all *.sgy files of the input's folder, or all SEG Y files on the tapes
#: takes list none|FILE none a text file of header values: one value, or a range such as 10 - 20, a line
#: takes polygon none|FILE none a text file of the corners of a polygon in two header values
#: takes listed kept|dropped kept what becomes of the traces in the list or polygon
#: takes primary-byte NUMBER 189 where the value (of a polygon, x) begins in the trace header, counted from 1
#: takes primary-type "1 byte integer|2 byte integer|4 byte integer|4 byte float" "4 byte integer" how it is stored
#: takes secondary-byte none|NUMBER none the same for the list's second value, or the polygon's y
#: takes secondary-type "1 byte integer|2 byte integer|4 byte integer|4 byte float" "4 byte integer" how it is stored
include parts/all.qs
include parts/overwrite.qs
include parts/next-tape.qs
include parts/next-output.qs
include parts/position.qs

patience 0
when input=FILE
  expect file ${input} exists else "there is no file \"${input}\""
end
when output=FILE
  when overwrite=no
    expect file ${output} absent else "\"${output}\" exists; give overwrite=yes to replace it"
  end
end
when list=none
else
  when polygon=none
  else
    give-up "give list=FILE or polygon=FILE, not both"
  end
end
patience 2
press main.image-copy
select copy.format "SEG Y"
press copy.parameters
when list=none
else
  press segy.range-limit
  press segy.limit-by-list
  press segy.limit-settings
  when listed=kept
    press segy-list.inclusion
  else
    press segy-list.exclusion
  end
  answer-file ${list}
  press segy-list.choose-file
  type segy-list.primary-byte ${primary-byte}
  select segy-list.primary-type "${primary-type}"
  when secondary-byte=NUMBER
    press segy-list.use-secondary
    type segy-list.secondary-byte ${secondary-byte}
    select segy-list.secondary-type "${secondary-type}"
  end
  press segy-list.ok
end
when polygon=none
else
  when secondary-byte=none
    give-up "a polygon needs secondary-byte=NUMBER, for its y"
  end
  press segy.range-limit
  press segy.limit-by-polygon
  press segy.limit-settings
  when listed=kept
    press segy-polygon.inclusion
  else
    press segy-polygon.exclusion
  end
  press segy-polygon.from-file
  answer-file ${polygon}
  press segy-polygon.choose-file
  type segy-polygon.primary-byte ${primary-byte}
  select segy-polygon.primary-type "${primary-type}"
  type segy-polygon.secondary-byte ${secondary-byte}
  select segy-polygon.secondary-type "${secondary-type}"
  press segy-polygon.ok
end
when inputs=separate|joined
  press segy.multiple-inputs
end
when inputs=joined
  press segy.join-inputs
end
press segy.ok
when input=DRIVE
  press copy.input-tape
  include parts/input-drive.qs
else
  answer-file ${input}
  press copy.input-disk
end
when output=DRIVES
  press copy.output-tape
  include parts/output-drives.qs
else
  answer-file ${output}
  press copy.output-disk
end
include parts/copy.qs
include parts/checks.qs
expect text copy.status "Complete" else "the copy failed"
quit
