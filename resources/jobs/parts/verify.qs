# Starts the comparison that is set up in the verify dialog, and waits for its end.
wait enabled verify.start 60 else "these cannot be compared"
press verify.start
wait text verify.status "[CFI]*" 8640000
