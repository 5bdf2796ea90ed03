# A file in the file dump, which has the reports on datasets.
wait window main 10
press main.file-dump
wait window file-dump 10
answer-file $input
press file-dump.open-file
stay
