# A tape-image file as the input of a copy.
wait window main 10
press main.image-copy
wait window copy 10
answer-file $input
press copy.input-disk
stay
