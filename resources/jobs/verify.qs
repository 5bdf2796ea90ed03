#: title compares two copies, each on tape or in a tape-image file, byte for byte
#: needs first DRIVE|FILE the tape drive or the file with the original
#: needs second DRIVE|FILE the tape drive or the file with the copy
#: takes concatenated no|yes no whether the copy has only the first file of each tape
include parts/all.qs
include parts/next-tape.qs

patience 0
when first=FILE
  expect file ${first} exists else "there is no file \"${first}\""
end
when second=FILE
  expect file ${second} exists else "there is no file \"${second}\""
end
patience 2
press main.verify
when first=DRIVE
  press verify.first-tape
  select input-drive.drives ${first}
  press input-drive.ok
else
  answer-file ${first}
  press verify.first-disk
end
when second=DRIVE
  press verify.second-tape
  select input-drive.drives ${second}
  press input-drive.ok
else
  answer-file ${second}
  press verify.second-disk
end
when concatenated=yes
  press verify.concatenated
end
include parts/verify.qs
include parts/checks.qs
expect text verify.status "Complete" else "the copies differ"
quit
