# Starts the comparison that is set up in the verify dialog, and waits for its end.
expect enabled verify.start else "these cannot be compared"
press verify.start
wait text verify.status "[CFI]*" 8640000
