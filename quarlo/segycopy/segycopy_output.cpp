#include "quarlo/segycopy/segycopy_output.h"

#include <algorithm>
#include <charconv>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/loglines.h"

namespace {

constexpr TapeChangeWords kOutputWords = {"Tape finished.", "Magazine finished.", "  "};

}  // namespace

SegyOutput::SegyOutput(UnitStruct* allUnits, const FileSet& allInputs) : units_(allUnits), inputs_(allInputs) {
  const std::string_view name = fieldText(units_[1].fs.name);
  baseName_ = name.substr(0, name.find('.'));
  disk_.begin(units_[1].fp, units_[1].name);
}

bool SegyOutput::writeTape(std::span<const char> piece) const {
  const int bytes = static_cast<int>(piece.size());
  return tlv_tape_write(units_, kAllOutputs, piece.data(), bytes) >= bytes;
}

bool SegyOutput::writeHeader(const std::vector<char>& header) {
  return isTape() ? writeTape(header) : disk_.write(header, false);
}

bool SegyOutput::writeTrace(std::span<const char> trace) {
  if (!isTape()) return disk_.writeLent({}, trace, true);
  if (writeTape(trace)) return true;
  gone_ = {1, static_cast<double>(trace.size()), 0};
  return false;
}

// ---- volumes ----------------------------------------------------------------------------------------------------

SegyOutput::Volume SegyOutput::getAnotherOutput(int index) { return isTape() ? nextTapes() : nextFile(index); }

std::vector<std::string> SegyOutput::existingVolumes(int last) const {
  std::vector<std::string> found;
  for (const std::string& name : listFiles(units_[1].fs.dir, "*.sgy").names) {
    int index = 0;
    const char* const begin = name.data() + std::min(baseName_.size(), name.size());
    std::from_chars(begin, name.data() + name.size(), index);
    if (index >= 1 && index <= last && name == volumeName(index) &&
        !inputs_.holds(joinPath(fieldText(units_[1].fs.dir.path), name)))
      found.push_back(name);
  }
  return found;
}

void SegyOutput::startSync() {
  if (units_[1].fp != nullptr) sync_.add(units_[1].fp, pathOf(units_[1].fs));
}

SegyOutput::Volume SegyOutput::nextFile(int index) {
  const bool whole = flush();
  startSync();
  if (closeDiskUnit(&units_[1]) != 0 || !whole) return Volume::Failed;
  FILE_SPEC next = units_[1].fs;
  const std::string name = volumeName(index);
  const bool fits = copyText(next.name, name);
  if (fits && inputs_.holds(pathOf(next))) {
    console_printf("  *** Output file %s is an input of this job and is not written.", next.name);
    return Volume::Failed;
  }
  if (!fits || !openDiskUnit(&units_[1], next, "wb")) {
    console_printf("***  Error opening file %s", name.c_str());
    return Volume::Failed;
  }
  disk_.begin(units_[1].fp, units_[1].name);
  console_printf("Output file %d: %s", index + 1, next.name);
  return Volume::Ready;
}

SegyOutput::Volume SegyOutput::nextTapes() {
  if (!completeOutputTapes(units_, 2)) {
    xvt_dm_post_error("Error writing eof to output tape");
    return Volume::Failed;
  }
  return nextOutputTapes(units_, kOutputWords) != 0 ? Volume::Ready : Volume::Declined;
}

bool SegyOutput::initOutput(const std::vector<char>& ebcdic, const std::vector<char>& binary) {
  if (writeHeader(ebcdic) && writeHeader(binary)) return true;
  console_out(isTape() ? "  *** Error writing to output tape." : "  *** Error writing to output disk file.");
  return false;
}

bool SegyOutput::separateFiles() {
  if (tlv_weof(units_, kAllOutputs, 1) == 0) return true;
  console_out("*** Error writing end-of-file.");
  return false;
}

bool SegyOutput::finish(JobEnd end) {
  if (isTape()) return closeOutputTapes(units_, end, 2);
  const bool whole = flush();
  startSync();
  return sync_.wait([](const DiskSync::Failure& failure) { console_out(diskErrorText(failure).c_str()); }) && whole;
}
