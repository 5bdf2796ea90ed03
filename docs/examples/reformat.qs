# One file from one format into another, by the names that the lists of the dialog have:
#   quarlo --headless --script reformat.qs from="SEG D" input=line.segd to=Kyr output=line.kyr
# An output that is there already is not overwritten: the script fails.
wait window main 10
press main.reformat
wait window reformat 5
select reformat.input-format "$from"
select reformat.output-format "$to"
answer-file "$input"
press reformat.input-disk
answer-file "$output"
press reformat.output-disk
press reformat.run
wait text reformat.status "[CF]*" 86400
expect text reformat.status "Complete" else "the run failed: console.txt tells why"
quit
