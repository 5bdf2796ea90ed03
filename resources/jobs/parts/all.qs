# What all jobs have in common: what they show, and what they answer to boxes.
follow console
watch progress percent-value
answer-always error-box
  report error-box.text
  press error-box.ok
end
answer-always note-box
  report note-box.text
  press note-box.ok
end
answer-always ask-box
  report ask-box.text
  give-up "this is answered in the dialogs only"
end
# What a job asks that includes no part for it.
answer-always input-continue
  give-up "there is no answer to the question for the next input tape: see parts/next-tape.qs"
end
answer-always output-continue
  give-up "there is no answer to the question for the next output tape: see parts/next-output.qs"
end
answer-always tape-position
  give-up "there is no answer to a tape that is not at its beginning: see parts/position.qs"
end
wait window main 60
