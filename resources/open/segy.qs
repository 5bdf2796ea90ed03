# A SEG Y file as the input of a SEG Y copy.
wait window main 10
press main.image-copy
wait window copy 10
select copy.format "SEG Y"
answer-file $input
press copy.input-disk
stay
