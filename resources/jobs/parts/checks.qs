# What a job's console must not have: errors, and warnings that tell of data that is not in the output. A read error behind
# which the block was read after all is none.
expect no-line console "*\\*\\*\\**" "  \\*\\* * could not be read:*" "  \\*\\* *not copied*" "  \\*\\* *no whole trace*" "  \\*\\* *is not complete*" "  \\*\\* *what it held of this job is replaced*" "  \\*\\* *goes on behind its end*" except "*Error reading tape on drive*" "*retrying*" "*is no regular file and is not copied*" "*behind its last announced trace*"
