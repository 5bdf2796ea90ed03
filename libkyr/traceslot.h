/// The slot of one trace in a dataset file: 24 bytes of marker and sums, the 200 words of the header, the samples.
#pragma once

#include <cstddef>
#include <cstdint>

#include "libkyr/properties.h"

namespace traceslot {

constexpr std::size_t kPrefixSize = 24;
constexpr std::size_t kHeadSize = kPrefixSize + 4 * kTraceHeaderWords;  ///< marker, sums and trace header

/// Bytes of a slot, a multiple of 8.
constexpr std::uint64_t size(int samples) { return (kHeadSize + 4 * static_cast<std::uint64_t>(samples) + 7) / 8 * 8; }

/// What a slot was found to be.
enum class State { Written, NeverWritten, Damaged };

/// Writes a whole slot. @param seed of the sums: what tells this slot from all others of all datasets
void encode(std::uint64_t seed, const TraceInfo& header, const float* samples, int count, unsigned char* slot);

/// Reads marker and header from the first `headSize` bytes. The header is set when the slot is `Written`. Whether one
/// is `NeverWritten` its samples have to tell as well (isBlank).
State decodeHeader(std::uint64_t seed, const unsigned char* slot, TraceInfo* header);
/// Whether a slot, or as much of it as its file holds, is zero: nobody wrote it. One whose head alone is zero was
/// written and lost it.
bool isBlank(const unsigned char* slot, std::size_t size);
/// Reads the samples of a written slot. @return false when they are damaged
bool decodeSamples(std::uint64_t seed, const unsigned char* slot, int count, float* samples);

}  // namespace traceslot
