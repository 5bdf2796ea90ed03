#: takes position stop|rewind|go-on stop what to do with a tape that is not at its beginning
when position=rewind
  answer-always tape-position
    press tape-position.rewind
    press tape-position.ok
  end
end
when position=go-on
  answer-always tape-position.ok
end
when position=stop
  answer-always tape-position
    give-up "a tape is not at its beginning; give position=rewind to rewind it or position=go-on to begin where it stands"
  end
end
