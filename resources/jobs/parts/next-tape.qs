#: takes next-tape stop|ask|DRIVES stop further input tapes: none, put in by a person at the terminal, or in these drives, in this order; next: the same drive brings it
when next-tape=ask
  expect terminal else "next-tape=ask asks at the terminal, and standard input is none"
  answer-always input-continue
    try press input-continue.unload
    prompt "The input tape has ended. Put in the next one and press Return, or type stop:" stop input-continue.stop
    answer-always error-box
      print error-box.text
      press error-box.ok
    end
    try press input-continue.open
    try press input-continue.continue
    again
  end
end
when next-tape=DRIVES
  each drive ${next-tape}
    answer input-continue
      when drive=next
        press input-continue.unload
        press input-continue.open
      else
        try press input-continue.rewind
        press input-continue.select-drive
        select input-drive.drives ${drive}
        press input-drive.ok
      end
      press input-continue.continue else "next-tape=${next-tape}: the next tape (${drive}) cannot be opened"
    end
  end
end
when next-tape=stop|DRIVES
  answer-always input-continue.stop
end
