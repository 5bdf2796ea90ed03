# The drives beside a cartridge, in the tape dump.
wait window main 10
press main.tape-dump
wait window tape-dump 10
press tape-dump.select-drive
stay
