#: title scans the trace headers of a SEG Y file or a dataset: an index file beside it, a summary, a table if so wanted
#: needs input FILE the file to scan; an index file that is there already is written anew
#: takes from segy|dataset segy the input's format
#: takes table none|FILE none a table to write, with a line of comma-separated values for every trace
include parts/all.qs
include parts/overwrite.qs

patience 0
expect file ${input} exists else "there is no file \"${input}\""
when table=none
else
  when overwrite=no
    expect file ${table} absent else "\"${table}\" exists; give overwrite=yes to replace it"
  end
end
patience 2
press main.file-scan
wait window file-scan 60
when from=dataset
  select file-scan.format "Kyr"
else
  select file-scan.format "SEG Y"
end
answer-file ${input}
press file-scan.input
when table=none
else
  press file-scan.table
  answer-file ${table}
  press file-scan.table-file
end
expect enabled file-scan.run else "this cannot be scanned"
press file-scan.run
wait text file-scan.status "[CFI]*" 8640000
include parts/checks.qs
expect text file-scan.status "Complete" else "the scan failed"
quit
