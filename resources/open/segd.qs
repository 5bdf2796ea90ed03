# A SEG D file as the input of a SEG D copy.
wait window main 10
press main.image-copy
wait window copy 10
select copy.format "SEG D"
answer-file $input
press copy.input-disk
stay
