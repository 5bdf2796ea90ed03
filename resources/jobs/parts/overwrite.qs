#: takes overwrite no|yes no whether files that are there already are replaced
when overwrite=yes
  answer-always ask-box.first
else
  answer-always ask-box
    report ask-box.text
    give-up "give overwrite=yes to replace what is there"
  end
end
