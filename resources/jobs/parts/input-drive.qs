# Chooses the drive ${input} in the dialog that is open.
#: takes input-end rewind|stay|unload rewind what the drive does with an input tape at its end
select input-drive.drives ${input}
when input-end=stay
  press input-drive.no-rewind
end
when input-end=unload
  press input-drive.unload-at-end
end
press input-drive.ok
