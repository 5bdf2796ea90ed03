/// Where the field files of an input on disk and their traces lie, found in one pass over their headers.
#pragma once

#include "libkyr/bytesat.h"
#include "quarlo/tapelib/formats/segdrecord.h"
#include "quarlo/tapelib/formats/segdscan.h"

constexpr std::uint32_t kNoSegdSet = 0xFFFFFFFFU;

/// One trace of a field file.
struct SegdTracePlace {
  std::uint64_t byte = 0;  ///< its header; of a multiplexed record the first scan of its scan type
  std::uint32_t samples = 0;
  std::uint32_t set = kNoSegdSet;  ///< index into the record's sets; kNoSegdSet where the trace cannot be read
};

/// One field file as it lies in the input.
struct SegdFieldFile {
  std::uint64_t byte = 0;  ///< where it begins
  std::uint64_t end = 0;   ///< where it ends, its trailer included
  SegdRecord record;
  std::vector<SegdTracePlace> traces;  ///< as in the file; of a multiplexed record set by set, channel by channel
  SegdScans scans;                     ///< of a multiplexed record
  std::vector<SegdDamage> damage;      ///< in bytes of the input
};

/// Walks from field file to field file.
class SegdWalk {
 public:
  /// @param input stays where it is
  explicit SegdWalk(BytesAt& input) : input_(input), size_(input.size()) {}

  /// The next field file; one that is damaged has the traces that were found, which may be none. Nothing at the end
  /// of the input, behind damage that leaves open where the next field file begins, and where none begins.
  std::optional<SegdFieldFile> next();

  /// Bytes of the input that were not walked over.
  std::uint64_t rest() const { return size_ - place_; }

 private:
  bool readHeaders(SegdFieldFile& file);
  void findTraces(SegdFieldFile& file);
  bool stepOverTrace(SegdFieldFile& file, std::uint64_t& place);
  bool stepOverDamage(SegdFieldFile& file, std::uint64_t& place, const SegdDamage& damage);
  std::uint32_t settleSamples(const SegdFieldFile& file, const SegdTrace& trace, std::uint32_t set,
                              std::uint64_t place);
  void findScans(SegdFieldFile& file);
  void skipTrailer(SegdFieldFile& file) const;
  bool beginsFieldFile(std::uint64_t place) const;
  bool goesOnAt(const SegdFieldFile& file, std::uint64_t place, std::uint64_t before) const;
  std::span<const char> at(std::uint64_t place, std::uint64_t count) const;

  BytesAt& input_;
  std::uint64_t size_;
  std::uint64_t place_ = 0;
  bool isLost_ = false;
  std::vector<std::uint32_t> settled_;  // samples of the traces of each set that have no count of their own
};
