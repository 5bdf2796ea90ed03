#: title joins datasets: the records of one behind those of the other
#: takes folder none|FOLDER none a folder whose *.kyr files are joined, in the order of their names
#: takes input none|TEXT none datasets with commas between them, joined in this order, behind those of the folder
#: needs output FILE the dataset to write
#: takes type found|unstacked|stack-2d|stack-3d found what the output becomes; found: what its inputs are, or of mixed type
include parts/all.qs
include parts/overwrite.qs

patience 0
when overwrite=no
  expect file ${output} absent else "\"${output}\" exists; give overwrite=yes to replace it"
end
when folder=none
  when input=none
    give-up "give folder=FOLDER, or input=FILE with further files behind commas"
  end
end
patience 2
press main.merge
when folder=none
else
  answer-file ${folder}
  press merge.add-folder
end
when input=none
else
  each file ${input}
    answer-file ${file}
    press merge.add-file
  end
end
when type=unstacked
  press merge.force-type
  select merge.type "Unstacked"
end
when type=stack-2d
  press merge.force-type
  select merge.type "2D Stack"
end
when type=stack-3d
  press merge.force-type
  select merge.type "3D Stack"
end
answer-file ${output}
press merge.output
expect enabled merge.merge else "the merge cannot start"
press merge.merge
wait text merge.status "[CFI]*" 8640000
include parts/checks.qs
expect no-line console "*omitted from merge*" "  \\*\\* Warning: *" "  \\*\\*\\* Merge aborted*"
expect text merge.status "Complete" else "the merge failed"
quit
