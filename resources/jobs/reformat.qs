#: title brings traces from one format into another: field tapes and files into datasets or SEG Y, datasets into SEG Y
#: needs input DRIVE|FILE the tape drive or the file to read
#: needs output DRIVES|FILE the file to write; of SEG Y also a tape drive or drives
#: takes from segy|segd|dataset|TEXT segy the input's format: one of these, or its name in the list of the dialog
#: takes to dataset|segy dataset the output's format
#: takes records NUMBER 10000 of a tape with SEG Y or SEG D: how many records it has at most
#: takes traces NUMBER 0 of such a tape: how many traces a record has at most; 0: as the headers say
#: takes files all|one all of such a tape: whether all of its files are read, or a single one
#: takes auxiliary no|yes no of SEG D: whether auxiliary channel sets go in as well
#: takes pad no|yes no of SEG D: whether shorter traces are filled with zeros; else traces of another length are left out
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
patience 2
press main.reformat
wait window reformat 60
when from=segy
  select reformat.input-format "SEG Y"
else
  when from=segd
    select reformat.input-format "SEG D"
  else
    when from=dataset
      select reformat.input-format "Kyr"
    else
      select reformat.input-format "${from}"
    end
  end
end
when to=dataset
  select reformat.output-format "Kyr"
else
  select reformat.output-format "SEG Y"
end
when from=segd
  answer segd-input
    type segd-input.most-records ${records}
    type segd-input.most-traces ${traces}
    when files=one
      press segd-input.one-file
    end
    when auxiliary=yes
      press segd-input.auxiliary
    end
    when pad=yes
      press segd-input.pad
    end
    press segd-input.ok
  end
  press reformat.input-parameters
end
when input=DRIVE
  when from=segy
    answer segy-input
      type segy-input.most-records ${records}
      type segy-input.most-traces ${traces}
      when files=one
        press segy-input.one-file
      end
      press segy-input.ok
    end
    press reformat.input-parameters
  end
  press reformat.input-tape
  include parts/input-drive.qs
else
  answer-file ${input}
  press reformat.input-disk
end
when output=DRIVES
  press reformat.output-tape
  include parts/output-drives.qs
else
  answer-file ${output}
  press reformat.output-disk
end
expect enabled reformat.run else "the reformat cannot start"
press reformat.run
wait text reformat.status "[CFI]*" 8640000
include parts/checks.qs
expect no-line console "  \\*\\* *left out*"
expect text reformat.status "Complete" else "the reformat failed"
quit
