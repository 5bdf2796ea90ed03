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
wait window main 60
