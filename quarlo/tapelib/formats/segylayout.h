/// Where everything stands in a SEG Y file, and what is believed of headers that contradict each other or the file's
/// length (docs/segy-reading.md). Tapes have blocks instead: segyTapeLayout and placeInBlock take the same headers.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "libkyr/bytesat.h"
#include "quarlo/tapelib/formats/segydecode.h"
#include "quarlo/tapelib/formats/segyformat.h"
#include "quarlo/tapelib/formats/segyrecords.h"

/// What a text header is written in.
enum class SegyText { Ebcdic, Ascii, Zeros };

/// What a user says of a file whose headers do not, or wrongly.
struct SegyChoices {
  std::optional<SegyText> text;
  std::optional<bool> bigEndian;
  int sampleFormat = 0;  ///< 0: as the binary header says
  SegyRecordRule records{};
};

/// Traces of one length that follow each other.
struct SegyRun {
  std::uint64_t firstTrace = 0;  ///< from 0
  std::uint64_t place = 0;       ///< byte of the first one's header
  std::uint32_t headerBytes = 0;
  std::uint32_t samples = 0;
};

/// One trace's place.
struct SegyPlace {
  std::uint64_t place = 0;
  std::uint32_t headerBytes = 0;
  std::uint32_t samples = 0;
};

struct SegyLayout {
  SegyText text = SegyText::Zeros;
  SegyReading reading;
  int majorRevision = 0;
  int minorRevision = 0;
  int sampleFormat = 0;
  std::uint32_t sampleBytes = 0;
  std::uint64_t tracesPerRecord = 0;  ///< data and auxiliary traces that the binary header announces; 0: it does not
  double interval = 0.0;              ///< microseconds; 0: no header tells it
  bool fixedLength = false;           ///< the file says that all traces have one length
  std::uint64_t extendedHeaders = 0;  ///< of text, 3200 bytes each, behind the binary header
  int statedTexts = 0;                ///< what the binary header says of their number; -1: a stanza ends them
  int statedTrailers = 0;             ///< the same of the texts behind the traces
  std::uint32_t headerBytes = 0;      ///< of a trace, additional ones included; fewer may be in single traces
  std::uint64_t firstTrace = 0;       ///< byte
  std::uint64_t end = 0;              ///< byte behind the last one that can belong to a trace
  std::uint64_t traces = 0;
  std::uint64_t rest = 0;  ///< bytes between the last whole trace and `end`
  std::vector<SegyRun> runs;
  std::vector<std::uint64_t> firstTraces;  ///< of each record, from 0
  std::uint64_t largestRecord = 0;         ///< traces
  std::vector<std::string> remarks;        ///< lines about what is odd, for a log

  /// Samples of the first trace: what all others are padded or cut to.
  std::uint32_t samples() const { return runs.empty() ? 0 : runs.front().samples; }
  /// @param trace from 0, below `traces`
  SegyPlace placeOf(std::uint64_t trace) const;
};

/// Tells a text header's alphabet.
SegyText segyTextOf(std::span<const char> header);
/// Whether a block of text begins a stanza: "((", in either alphabet.
bool beginsSegyStanza(std::span<const char> block);
/// Whether it is the stanza that ends the extended text headers.
bool isSegyEndStanza(std::span<const char> block);

constexpr std::size_t kSegyLabelBytes = 128;
/// Whether the bytes are a tape label, as may stand before the text header: 128 bytes with the revision, such as
/// "SY1.0", behind the number of the tape.
bool isSegyLabel(std::span<const char> bytes);

/// Looks through a file: its headers, and those of its traces where their counts are believed.
/// @param reason receives why it cannot be read as SEG Y, with place and value
/// @return nothing with a reason
std::optional<SegyLayout> segyFileLayout(BytesAt& file, const SegyFormat& format, const SegyChoices& choices,
                                         std::string* reason);

/// The same from the reel headers of a tape, as far as they tell it: no traces, no text headers but the first.
/// takeFirstTrace completes it.
/// @param text,binary blocks, empty where the description has none
std::optional<SegyLayout> segyTapeLayout(std::span<const char> text, std::span<const char> binary,
                                         const SegyFormat& format, const SegyChoices& choices, std::string* reason);

/// What the block of the first trace adds: the samples of a trace, and the interval where the binary header tells none.
/// @return false when the block holds no samples
bool takeFirstTrace(std::span<const char> block, std::span<const char> binary, const SegyFormat& format,
                    SegyLayout* layout);

/// Where a trace that is one block has its samples, and how many. @return nothing for a block that holds no trace
std::optional<SegyPlace> placeInBlock(const SegyLayout& layout, std::span<const char> block);

/// Bytes of a trace's headers. One of revision 2 may say that it has fewer additional ones than the file's traces have
/// at most. @param header as many bytes as they have at most
std::uint32_t segyTraceHeaderBytes(const SegyLayout& layout, std::span<const char> header);
