# A field tape into a dataset:
#   quarlo --headless --script tape-to-dataset.qs format="SEG D" drive=0 output=line.kyr
# The job "reformat" does the same and more (quarlo --jobs).
wait window main 10
press main.reformat
wait window reformat 5
select reformat.input-format "$format"
select reformat.output-format "Kyr"
press reformat.input-tape
select input-drive.drives $drive
press input-drive.ok
answer-file "$output"
press reformat.output-disk
answer-always tape-position          # a tape that is not at its beginning is rewound
  press tape-position.rewind
  press tape-position.ok
end
answer-always input-continue.stop    # there is no further tape
press reformat.run
wait text reformat.status "[CF]*" 86400
expect text reformat.status "Complete" else "the run failed: console.txt tells why"
expect no-line console "*\\*\\*\\**" else "console.txt tells what could not be read at once"
quit
