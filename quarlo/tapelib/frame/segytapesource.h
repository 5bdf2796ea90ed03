/// SEG Y on tapes as a source of traces (libkyr/source.h): a trace a block, read forward, tape after tape.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "libkyr/streamsource.h"
#include "quarlo/tapelib/formats/segytraces.h"
#include "quarlo/tapelib/frame/segysource.h"
#include "quarlo/tapelib/frame/tapeblocks.h"

class SegyTapeSource final : public StreamSource {
 public:
  using Say = SegyFileSource::Say;

  /// Reads as far as the first trace, which decides on the samples and the interval of all.
  /// @param say takes lines about what is odd, now and when the source is closed
  /// @param reason receives why the tape cannot be read; empty where a line has said it
  /// @return null with a reason
  static std::unique_ptr<SegyTapeSource> open(ProcessRecord* procRecord, SegyFormat format,
                                              const SegySourceParams& params, Say say, std::string* reason);

  /// Of the file in hand.
  const SegyLayout& layout() const { return layout_; }
  /// Tape files that were read to their end.
  int files() const { return tape_.files(); }

  const GeneralSeisDataOrg& org() const override { return org_; }
  SourceFormat format() const override;
  /// Says what was odd in the traces that were read, and which blocks could not be.
  int close() override;

 private:
  SegyTapeSource(ProcessRecord* procRecord, SegyFormat format, const SegySourceParams& params, Say say);

  bool begin(std::string* reason);
  bool takeCounts(std::string* reason);
  TapeItem findTrace();
  TapeItem beginFile();
  TapeItem readTexts();
  bool readReel(std::string* text, std::string* binary);
  TapeItem wrong(const std::string& why);
  bool isOtherThanFirst();
  int next(StreamTrace* next) override;
  int takeTrace(StreamTrace* next);
  int takeLost(StreamTrace* next, const std::string& why);
  bool place(StreamTrace* next, bool begins);
  void readTrace(std::span<const char> block, const SegyPlace& place, StreamTrace* next);
  void renewReader();
  void tellOddities();

  TapeBlocks tape_;
  SegyFormat format_;
  SegySourceParams params_;
  Say say_;
  SegyLayout layout_;
  std::unique_ptr<SegyTraceReader> reader_;
  std::optional<SegyRecords> records_;
  std::optional<SegyRecordSurvey> survey_;
  GeneralSeisDataOrg org_ = newSeisOrg();

  double interval_ = 0.0;  // of the first file, microseconds
  std::string binary_;     // header of the file in hand
  bool isFileStart_ = true;
  bool isSameFile_ = true;  // what follows continues the file before, as on the next tape
  bool isTrailer_ = false;
  bool isSkipped_ = false;              // the record in hand
  int taken_ = 0;                       // records
  std::vector<std::string> lostFirst_;  // where traces stand before the first one that could be read
  std::uint64_t otherLengths_ = 0;
  std::uint32_t shortest_ = 0, longest_ = 0;
};
