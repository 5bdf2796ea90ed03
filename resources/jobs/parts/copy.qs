# Starts the copy that is set up in the copy dialog, and waits for its end.
expect enabled copy.start else "the copy cannot start"
press copy.start
wait text copy.status "[CFI]*" 8640000
