/// A link: an open input or output of a process record, or the reason why there is none.
#pragma once

/// What dataset calls answer: 0 for success, else one of these. The causes in full: docs/libkyr.md.
enum KyrResult : int {
  kyrOk = 0,
  kyrBadCall = -1,        ///< no such link, property, type code, output number; a count that makes no sense
  kyrDiskError = -2,      ///< the system refused or failed (errno), or the file's header is damaged
  kyrNotSeismic = -3,     ///< the file is no dataset, or one of data that are not seismic
  kyrNoSuchTrace = -4,    ///< a record or trace number that the dataset does not have
  kyrTraceLost = -5,      ///< the trace is not in the file any more, or damaged
  kyrNoMemory = -6,       ///< an allocation failed
  kyrTooLate = -7,        ///< a count that is fixed since EndInit; writing to an input; a trace that a tape has passed
  kyrNotTwoD = -8,        ///< stacked (2-D) data asked for and others found, or traces not laid out in records
  kyrNotRadar = -9,       ///< ground-penetrating radar asked for and other data found
  kyrInUse = -10,         ///< the file is open under another link of the record, or somebody else writes it
  kyrOtherType = -11,     ///< one particular type asked for and another found
  kyrWrongVersion = -12,  ///< written by a later release in a form that this one cannot read
  kyrSourceEnded = -13,   ///< nothing more can be read from a source: its tape lost, a count exceeded, the job stopped
};

/// A valid link is positive and never used twice, so that one kept after its CloseFile names no other.
struct Link {
  int value = kyrBadCall;  ///< a valid link, or the KyrResult that an opening failed with
};

constexpr bool IsLinkValid(Link link) { return link.value > 0; }
