/// The text form of a SEG Y format description. Its rules, and an example: docs/format-segy-description.md.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quarlo/tapelib/formats/segyformat.h"

/// Newest version of the text form, and the oldest, in which a description is written that needs no more.
constexpr int kSegyTextVersion = 2;
constexpr int kSegyTextReadableFrom = 1;

/// Something wrong with a description, or worth a look.
struct SegyTextFault {
  int line;  ///< from 1; 0 for the description as a whole
  std::string text;
};

/// Longest text that is taken for a description, in bytes, and the most fields of one header.
constexpr std::size_t kMaxSegyTextBytes = std::size_t{1024} * 1024;
constexpr int kMaxSegyFields = 1000;

/// Reads a description. What it does not mention is "no", 0 or empty, a scale 1.
/// @param format receives it, whole or (with faults) in part; its file specification is left empty
/// @return the faults, in the order of their lines; none when the description can be used
std::vector<SegyTextFault> parseSegyFormat(std::string_view text, SegyFormat* format);

/// Writes a description, so that parseSegyFormat reads the same one. What makes a line no line (control characters) is
/// written as blanks. Not written: where it is stored, the rows selected in dialogs.
std::string printSegyFormat(const SegyFormat& format);

/// What a description that can be used has that its author hardly meant: fields that overlap, that leave their header,
/// or that a header of no length cannot hold.
std::vector<std::string> checkSegyFormat(const SegyFormat& format);
