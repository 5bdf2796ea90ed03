#: takes next-output stop|ask|DRIVES stop further output tapes, said as for next-tape
when next-output=ask
  expect terminal else "next-output=ask asks at the terminal, and standard input is none"
  answer-always output-continue
    try press output-continue.unload
    prompt "The output needs its next tape. Put in the next one and press Return, or type stop:" stop output-continue.stop
    answer-always error-box
      print error-box.text
      press error-box.ok
    end
    try press output-continue.open
    try press output-continue.continue
    again
  end
end
when next-output=DRIVES
  each drive ${next-output}
    answer output-continue
      when drive=next
        press output-continue.unload
        press output-continue.open
      else
        try press output-continue.rewind
        press output-continue.select-drive
        select output-drive.drives ${drive}
        press output-drive.ok
      end
      press output-continue.continue else "next-output=${next-output}: the next tape (${drive}) cannot be opened"
    end
  end
end
when next-output=stop|DRIVES
  answer-always output-continue
    report "the output needs a next tape; give next-output=ask, or the drives that the next tapes are in"
    press output-continue.stop
  end
end
