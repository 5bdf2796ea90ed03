/// The header of a dataset file, and where its counts put every trace. Byte layout: docs/format-kyr.md.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "libkyr/seisorg.h"

constexpr std::size_t kDatasetHeaderSize = 4096;
/// The most files that one dataset can be spread over.
constexpr int kMaxDatasetParts = 999;

using DatasetHeaderBytes = std::array<unsigned char, kDatasetHeaderSize>;

/// The counts of a dataset, and the places that follow.
struct DatasetShape {
  int records = 0;
  int tracesPerRecord = 0;
  int slotsPerRecord = 0;  ///< trace places that a record has in the file, at least tracesPerRecord
  int samples = 0;
  int recordsPerFile = 0;  ///< 0: all of them in one file

  /// No negative count, records and traces that an int can count past, not too many files, and every file's size
  /// within 63 bits.
  bool isSound() const;
  std::uint64_t slotSize() const;
  int parts() const;
  /// Slots of a part (from 0) that belong to traces.
  std::uint64_t slotsInPart(int part) const;
  /// Slots of the parts before `part`.
  std::uint64_t slotsBefore(int part) const;
  std::uint64_t sizeOfPart(int part) const;
  /// The number of a trace's slot in the whole dataset, from 0.
  std::uint64_t slotNumber(int record, int trace) const;
  int partOf(int record) const;
  /// Byte of a slot in the file of its part.
  std::uint64_t offsetOf(int record, int trace) const;

 private:
  int recordsInPart(int part) const;
};

/// What the header says.
struct DatasetHeader {
  bool closed = false;
  int type = 0;
  int layout = 1;  ///< 1: records x traces x samples, the only one so far
  int slotsPerRecord = 0;
  int recordsPerFile = 0;
  int part = 1;
  std::uint64_t id = 0;  ///< the same in all parts of one dataset, different in every dataset
  GeneralSeisDataOrg org{};

  /// The counts, from the organisation record and the fields above.
  DatasetShape shape() const;
  /// Keeps the counts; those that follow from them are set as well.
  void setShape(const DatasetShape& shape);
};

DatasetHeaderBytes encodeDatasetHeader(const DatasetHeader& header);

/// @return kyrOk, kyrNotSeismic without the signature, kyrWrongVersion, kyrDiskError for a header that is damaged or
/// whose counts make no sense, kyrNotTwoD for another layout
int decodeDatasetHeader(const DatasetHeaderBytes& bytes, DatasetHeader* header);

/// The file of a part (from 0): the dataset's own name for the first, then with ".002", ".003" ... behind it.
std::string datasetPartName(const std::string& path, int part);
