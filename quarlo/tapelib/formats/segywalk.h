/// Which traces a SEG Y file has, where its headers and its length may contradict each other.
#pragma once

#include <limits>

#include "quarlo/tapelib/formats/segylayout.h"

/// What a count can be at most.
constexpr std::uint64_t kMaxCount = std::numeric_limits<std::int32_t>::max();
/// What the count of a trace's additional headers can say in its 16 bits; of 32 bits the others are believed no more.
constexpr int kMostAdditionalHeaders = std::numeric_limits<std::int16_t>::max();

/// Finds the traces between `firstTrace` and `end` of a layout, which are known, and their records, in
/// one pass over the headers. Fills its headerBytes, traces, runs, rest and records, and says what is odd.
///
/// The traces' own counts are taken when they lead to the end exactly and the file does not say that all traces have
/// one length; else the binary header's, or where that is 0 the first trace's; where that leaves bytes over, whatever
/// leaves the fewer ones. A count of 0 says nothing.
/// @param headerLengths of a trace, the likeliest first: it is taken unless only another leaves nothing over
/// @param binarySamples the binary header's count; 0: none
void fitTraces(BytesAt& file, const SegyFormat& format, const SegyRecordRule& records,
               const std::vector<std::uint32_t>& headerLengths, std::uint64_t binarySamples, SegyLayout* layout);
