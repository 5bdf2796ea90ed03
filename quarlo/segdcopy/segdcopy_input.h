/// Where a SEG D copy reads: the files of a directory, one field file in each, or tapes.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "libkyr/piecereader.h"
#include "quarlo/tapelib/formats/segdhdr.h"
#include "quarlo/tapelib/frame/blockread.h"
#include "quarlo/tapelib/frame/inputfiles.h"
#include "quarlo/tapelib/tlv_fcn.h"

/// What came of asking for the next field file or trace.
enum class SegdItem {
  Data,
  End,
  Failed  ///< said on the console and in the log
};

class SegdInput {
 public:
  explicit SegdInput(UnitStruct* allUnits) : units_(allUnits) {}
  virtual ~SegdInput() = default;
  SegdInput(const SegdInput&) = delete;
  SegdInput& operator=(const SegdInput&) = delete;

  /// Reads the headers of the next field file into GenHdr and HeaderRecord.
  virtual SegdItem getFieldFile() = 0;
  /// @param trace receives the next trace of the field file, valid until the next call
  virtual SegdItem getSegdTrace(std::span<const char>* trace) = 0;
  /// Passes over the field file whose headers were read. @return false after a line
  virtual bool skipFile(int fieldFile) = 0;
  /// Ends the field file in hand.
  virtual void closeFile() {}
  /// Bytes of the field file that no header announced.
  virtual double bytesLeft() const { return 0; }
  /// Traces that the headers of the field file announce; tapes do not say.
  virtual int announcedTraces() const { return -1; }
  /// Has `act` called before traces that were lent are overwritten.
  virtual void beforeRefill(const std::function<void()>& /*act*/) {}
  /// How far the job is, in percent; tapes do not know.
  virtual int percent() const { return 0; }
  /// Names what could not be read of tapes.
  virtual void tellOfLost() const {}

  const segdheader& GenHdr() const { return headers.GenHdr; }
  SegdHeaders headers;
  std::vector<char> HeaderRecord;  ///< all headers of the field file as they were read
  std::string InputFileName;       ///< of a disk input
  bool traceIsLent = false;        ///< the bytes of the last trace stay until beforeRefill
  int TapesCopied = 1;             ///< one more than the tapes that were read to their end
  int tape = 1;                    ///< number of the tape in hand

 protected:
  UnitStruct* units_;
};

/// The directory's files with the extension of `file`.
DirectoryFiles listSegdFiles(const FILE_SPEC& file);

class SegdDiskInput : public SegdInput {
 public:
  /// @param names files in the directory of unit 0, which is closed
  SegdDiskInput(UnitStruct* allUnits, std::vector<std::string> names);
  ~SegdDiskInput() override { closeFile(); }

  SegdItem getFieldFile() override;
  SegdItem getSegdTrace(std::span<const char>* trace) override;
  bool skipFile(int fieldFile) override;
  void closeFile() override;
  void beforeRefill(const std::function<void()>& act) override { reader_.beforeRefill = act; }
  double bytesLeft() const override { return size_ - position_; }
  int announcedTraces() const override { return NumberOfChannels; }
  int percent() const override;

 private:
  bool open();
  bool readHeaders();
  bool readGeneralHeaders();
  bool readChannelSets();
  bool sampleSizeIsKnown();
  bool takeHeader(double bytes, const char* what);
  bool measureTrace(std::size_t* headerBytes);
  bool isTraceHeader(const char* header);
  SegdItem endOfTraces();
  void noteExtensions(int count);
  std::string extensionsText() const;
  bool restIsTrailer(double begin, double least) const;
  bool lengthsFit(bool byChannelSets, bool exactly) const;
  void adviseLengths(const char* mark) const;
  std::span<const char> zeroed(std::span<const char> trace, std::size_t headerBytes);
  /// Says what is wrong at a 0-based place of the file. @return false
  [[gnu::format(printf, 3, 4)]] bool complain(double place, const char* format, ...) const;

  std::vector<std::string> files_;
  std::size_t next_ = 0;
  DIRECTORY directory_;
  PieceReader reader_;
  double size_ = 0;      // of the file in hand
  double position_ = 0;  // in it
  int NumberOfChannels = 0;
  int channelsRead_ = 0;
  double shortestTrace_ = 0;  // of those read
  int firstExtensions_ = 0;   // that the header of the first trace announces
  int oddExtensions_ = 0;     // those of the first trace that announces others
  int oddTrace_ = 0;          // its number, from 1; 0: all agree
  std::optional<bool> fits_;  // whether the traces' lengths fit the file in hand, once that was asked
  std::vector<char> zeroes_;
};

class SegdTapeInput : public SegdInput {
 public:
  explicit SegdTapeInput(UnitStruct* allUnits);

  SegdItem getFieldFile() override;
  SegdItem getSegdTrace(std::span<const char>* trace) override;
  bool skipFile(int fieldFile) override;
  void tellOfLost() const override { reader_.tellOfLost(); }

 private:
  SegdItem getTapeBlock(std::span<const char>* block);
  bool handleInputEOT();
  void takeHeader(std::span<const char> block);

  PatientReader reader_;
  int Eof = 0;  // marks in a row
  bool SkippedLastFile = false;
};
