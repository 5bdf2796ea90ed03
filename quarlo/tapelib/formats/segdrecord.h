/// A SEG D field file as the published standard describes it (revisions 0, 1, 2.1, and 3 as far as its headers allow):
/// everything that is needed to find its traces and to make volts of them. The copies read their headers with
/// segdhdr.h, which keeps to readings of its own.
///
/// Nothing that the headers announce is believed before the bytes are there; what is wrong is told by its byte.
/// Revision 3 has never been tried on files that somebody recorded.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

/// What is wrong in the bytes of a field file.
struct SegdDamage {
  std::uint64_t byte = 0;  ///< counted from 0, from the beginning of the bytes that were read
  std::string what;        ///< the end of a line, such as "the headers end after 20 of 32 bytes"
};

template <typename T>
using SegdResult = std::variant<T, SegdDamage>;

/// A channel set that has channels.
struct SegdChannelSet {
  int scanType = 0;
  int number = 0;
  int type = 0;  ///< 1 seismic; every other one is auxiliary
  int channels = 0;
  double start = 0;  ///< milliseconds, as the end and the interval
  double end = 0;
  double interval = 0;      ///< 0 when it is not known
  int subscans = 1;         ///< samples of a channel in one base scan interval
  double toMillivolts = 1;  ///< recorded value to millivolts
  int physicalUnit = 0;     ///< revision 3's code of a unit that replaces the millivolt; 0 for none
  int extensions = 0;       ///< of a trace header, as announced; the trace headers are right

  /// Samples between start and end. Recorders write one more, or what they please: see SegdTrace::samples.
  std::uint32_t samples() const;
};

/// When a record was shot, by the clock of its recorder.
struct SegdTime {
  int year = 0;  ///< with its century
  int day = 0;   ///< of the year, from 1
  int hour = 0;
  int minute = 0;
  int second = 0;
};

/// How long the headers are.
struct SegdSizes {
  std::uint32_t generalBlocks = 1;
  std::uint32_t scanTypes = 0;
  std::uint32_t channelSets = 0;  ///< of each scan type
  std::uint32_t skewBlocks = 0;   ///< of each scan type
  std::uint32_t descriptorBytes = 32;
  std::uint32_t extendedBlocks = 0;
  std::uint32_t externalBlocks = 0;

  /// General headers, channel sets and skew: what readSegdRecord looks at.
  std::uint64_t describingBytes() const;
  /// All headers: where the traces or scans begin.
  std::uint64_t headerBytes() const;
};

/// The bytes of general headers that segdSizes wants to see.
constexpr std::size_t kSegdStartBytes = 64;

/// The headers of one field file.
struct SegdRecord {
  int formatCode = 0;
  int revision = 0;              ///< 0 to 3; what a header says beyond is read as 0
  int minorRevision = 0;         ///< 1 in 2.1
  std::optional<int> fieldFile;  ///< 0 is a number; nothing where the digits are none
  std::optional<SegdTime> time;  ///< nothing where the digits are none
  int manufacturer = 0;
  int recordType = 0;
  int bytesPerScan = 0;                           ///< of multiplexed data
  double interval = 0;                            ///< of a base scan, milliseconds
  double length = 0;                              ///< milliseconds
  std::optional<double> sourceLine, sourcePoint;  ///< of the first source that is named
  SegdSizes sizes;
  std::vector<SegdChannelSet> sets;  ///< as in the file, without the empty ones
  std::uint32_t emptySets = 0;
  std::uint64_t trailerBytes = 0;

  bool isMultiplexed() const { return formatCode < 8000; }
  /// Traces that the channel sets announce.
  std::uint64_t traces() const;
  /// The described set of a trace header's scan type and channel set; null when there is none.
  const SegdChannelSet* findSet(int scanType, int number) const;
};

/// How long the headers are, from their first kSegdStartBytes; 32 will do where no second general header is announced.
SegdResult<SegdSizes> segdSizes(std::span<const char> start);

/// Reads the headers of a field file. @param headers describingBytes() or more
SegdResult<SegdRecord> readSegdRecord(std::span<const char> headers);

/// A trace header with its first extension.
struct SegdTrace {
  std::optional<int> fieldFile;
  int scanType = 0;
  int channelSet = 0;
  std::optional<int> channel;  ///< begins anew in every set; nothing where the digits are none
  int edit = 0;                ///< trace edit byte
  int extensions = 0;
  std::uint32_t samples = 0;  ///< by extension 1; 0 where it does not tell
  std::optional<double> receiverLine, receiverPoint;
  int pointIndex = 0;
  int sensor = 0;

  std::size_t headerBytes() const;
  /// Dead, or zeroed on purpose. Traces whose samples were changed are alive.
  bool isKilled() const { return edit == 1 || edit == 2; }
};

/// Bytes of a trace header that must be there before its length is known; readSegdTrace reads one extension behind it.
constexpr std::size_t kSegdTraceStartBytes = 20;
/// The same with that extension of 32 bytes: all that is looked at.
constexpr std::size_t kSegdTraceLookBytes = kSegdTraceStartBytes + 32;

/// Reads a trace header. @param bytes from its beginning; 52 are looked at where an extension is announced
SegdResult<SegdTrace> readSegdTrace(std::span<const char> bytes, int revision);
