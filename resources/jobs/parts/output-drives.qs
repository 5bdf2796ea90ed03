# Chooses the drives ${output} in the dialog that is open.
when output=DRIVE
  select output-drive.drives ${output}
else
  press output-drive.multiple
  each drive ${output}
    select output-drive.several-drives ${drive} add
  end
end
press output-drive.ok
