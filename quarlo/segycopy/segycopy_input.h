/// Where a SEG Y copy reads: one file, the SEG Y files of a directory, or tapes.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "libkyr/piecereader.h"
#include "quarlo/tapelib/formats/segybinary.h"
#include "quarlo/tapelib/frame/blockread.h"
#include "quarlo/tapelib/frame/inputfiles.h"
#include "quarlo/tapelib/tlv_fcn.h"

/// What the binary reel header says of the traces.
struct SampleFacts {
  int interval = 0;  ///< microseconds
  int samples = 0;   ///< per trace
  int format = 0;    ///< code of the sample format

  /// Bytes of a trace on disk: format 3 has samples of 2 bytes, every other is taken as 4.
  int traceBytes() const;
};

/// What stands at one place of the input.
enum class SegyItem {
  Trace,
  Nothing,   ///< a bad block was passed over, or a tape changed; read on
  NewInput,  ///< the next SEG Y file begins: its headers have been read
  End,
  Failed  ///< said on the console
};

class SegyInput {
 public:
  explicit SegyInput(UnitStruct* allUnits) : units_(allUnits) {}
  virtual ~SegyInput() = default;
  SegyInput(const SegyInput&) = delete;
  SegyInput& operator=(const SegyInput&) = delete;

  // The headers of the first input. @return false after a console line
  virtual bool readEbcdic() = 0;
  virtual bool readBinary() = 0;
  /// @param trace receives a trace, whose bytes stay until beforeRefill
  virtual SegyItem next(std::span<const char>* trace) = 0;
  /// How far the job is, in percent; tapes do not know.
  virtual int percent(double /*bytesRead*/) const { return 0; }
  /// Names what could not be read of tapes.
  virtual void tellOfLost() const {}

  /// Called before traces that were handed out are overwritten; empty for nobody.
  std::function<void()> beforeRefill;

  int inputs() const { return begun_; }
  int ReelSize() const { return static_cast<int>(EbcdicHdr.size()); }
  int BinarySize() const { return static_cast<int>(BinaryHdr.size()); }

  // The headers read last.
  std::vector<char> EbcdicHdr;
  std::vector<char> BinaryHdr;
  SampleFacts facts;

 protected:
  /// Takes what the binary header says. @return false after a console line when it is too short for that
  bool takeBinary(std::span<const char> header);
  void letGo() const {
    if (beforeRefill) beforeRefill();
  }

  UnitStruct* units_;
  int begun_ = 0;
};

/// The directory's "*.sgy" files, without the one that is being written.
DirectoryFiles listSegyFiles(const DIRECTORY& directory, const std::string& outputPath);

class SegyDiskInput : public SegyInput {
 public:
  /// @param files in the directory of unit 0; empty for the one that is open as unit 0
  SegyDiskInput(UnitStruct* allUnits, std::vector<std::string> files);

  /// Opens the first file. @return false after a console line
  bool open();
  bool readEbcdic() override;
  bool readBinary() override;
  SegyItem next(std::span<const char>* trace) override;
  int percent(double bytesRead) const override;

 private:
  bool openListed();
  bool traceLengthIsSound();
  SegyItem endOfFile(std::size_t left);

  std::vector<std::string> TheList;
  PieceReader reader_;
  double size_ = 0;  // bytes of the present file
  std::size_t traceBytes_ = 0;
};

class SegyTapeInput : public SegyInput {
 public:
  explicit SegyTapeInput(UnitStruct* allUnits);

  bool readEbcdic() override;
  bool readBinary() override;
  SegyItem next(std::span<const char>* trace) override;
  void tellOfLost() const override { reader_.tellOfLost(); }

 private:
  SegyItem takeMark(TapeRead met);
  SegyItem nextTape();
  SegyItem beginInput();
  bool readHeader(const char* name, std::vector<char>* header);

  PatientReader reader_;
};
