# One instrument test on all traces of a record, by its row in the list of reports and the name of its dialog; `file` is the
# record's field file, "all" for the A/D test:
#   quarlo --headless --script instrument-test.qs data=month.kyr test="EIN Test" dialog=noise-test file=901
# The report and the values become noise-test.txt and noise-test.csv. Files that are there are not overwritten: the script fails.
wait window main 10
press main.file-dump
wait window file-dump 5
answer-file "$data"
press file-dump.open-file
select file-dump.reports "$test"
press file-dump.start-report
wait window $dialog 5
when file=all
else
  type $dialog.field-file $file
  type $dialog.last-trace 1000000
end
press $dialog.run
wait text $dialog.status "*tested*" 3600
print $dialog.status
answer-file $dialog.csv
press $dialog.save
answer-file $dialog.txt
press file-dump.save
quit
