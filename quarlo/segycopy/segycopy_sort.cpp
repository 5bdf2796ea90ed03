#include "quarlo/segycopy/segycopy_sort.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <new>

#include "libkyr/text.h"
#include "quarlo/segycopy/segycopy_params.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/frame/loglines.h"

namespace {

constexpr const char* kIndexName = "SegyCopy.idx";
constexpr std::size_t kBatchBytes = std::size_t{2048} * 1024;
constexpr double kSecondsApart = 60;  // the last writes to both files of a sort, on a disk however busy

std::string absolutePath(const std::string& path) {
  std::error_code failed;
  const std::string whole = std::filesystem::absolute(path, failed).string();
  return failed ? path : whole;
}

bool say(const char* line) {
  console_out(line);
  return false;
}

bool refuse(const std::string& path) {
  console_printf("  *** %s is used by this job already and cannot be a temporary file.", path.c_str());
  return false;
}

}  // namespace

// ---- making the files -------------------------------------------------------------------------------------------

SortStore::~SortStore() {
  side_.wait();
  traceFile_.reset();
  indexFile_.reset();
  traces_.reset();
  if (SgyParams.keepSortFile) traceTemp_.keep();
}

SortStore::Created SortStore::create(FileSet* taken) {
  tracePath_ = absolutePath(joinPath(fieldText(SgyParams.sortDir), fieldText(SgyParams.sortFile)));
  indexPath_ = absolutePath(joinPath(fieldText(SgyParams.sortDir), kIndexName));
  for (const std::string& path : {tracePath_, indexPath_}) {
    if (taken->holds(path)) {
      refuse(path);
      return Created::Failed;
    }
  }
  if (sameFile(tracePath_.c_str(), indexPath_.c_str())) {
    refuse(tracePath_);
    return Created::Failed;
  }
  if (!claim(&traceTemp_, tracePath_,
             formatText("  *** Error creating temporary file %s.", tracePath_.c_str()).c_str()) ||
      !claim(&indexTemp_, indexPath_, "  *** Error creating SegyCopy.idx file."))
    return Created::Failed;
  if (!isLeftover() && !mayEmpty()) return Created::Declined;
  taken->add(tracePath_);
  taken->add(indexPath_);
  return empty() ? Created::Ready : Created::Failed;
}

bool SortStore::claim(TempFile* file, const std::string& path, const char* failure) {
  switch (file->claim(path)) {
    case TempFile::Claim::Taken:
      return true;
    case TempFile::Claim::InUse:
      console_printf("  *** %s is in use by another job: choose a sort file in another directory.", path.c_str());
      return false;
    case TempFile::Claim::NoLocks:
      console_printf("  *** %s cannot be locked (%s): choose a sort file on another disk.", path.c_str(),
                     std::strerror(errno));
      return false;
    case TempFile::Claim::Failed:
      break;
  }
  return say(failure);
}

namespace {

/// Whether some field of a trace header, of whatever place and type, holds a value; no key at all counts as held.
bool holdsValue(const std::array<char, kTraceHeaderBytes>& header, double value) {
  for (int type = DT_INT8; type <= DT_FLOAT32; ++type) {
    for (HeaderKey key{1, type}; key.end() <= kTraceHeaderBytes; ++key.byte)
      if (key.in(header.data()) == value) return true;
  }
  return value == 0.0 || std::isnan(value);
}

}  // namespace

/// What a sort leaves that found no end, one of our own or of a program that was killed: empty files, or a trace file
/// that begins and ends as its index says and was last written when it was. A trace file that was kept may begin as
/// another sort's index says, and of the same input end so too.
bool SortStore::isLeftover() const {
  return (traceTemp_.size() == 0 && indexTemp_.size() == 0) ||
         (std::abs(std::difftime(traceTemp_.written(), indexTemp_.written())) <= kSecondsApart && areOfOneSort());
}

bool SortStore::areOfOneSort() const {
  std::array<std::int32_t, 2> lengths{};
  const int index = indexTemp_.descriptor();
  if (readAt(index, lengths.data(), sizeof lengths, 0) != sizeof lengths || lengths[0] <= 0 || lengths[1] <= 0)
    return false;
  const double headers = static_cast<double>(lengths[0]) + lengths[1];
  const auto bytes = static_cast<double>(traceTemp_.size());
  const std::uint64_t records = (indexTemp_.size() - sizeof lengths) / sizeof(SortItem);
  if (records == 0) return indexTemp_.size() == sizeof lengths && bytes == headers;
  SortItem first{};
  SortItem last{};
  if (readAt(index, &first, sizeof first, sizeof lengths) != sizeof first ||
      readAt(index, &last, sizeof last, sizeof lengths + (records - 1) * sizeof last) != sizeof last)
    return false;
  // Both files are handed to the system in step: one is ahead by what stood in a buffer.
  const bool endFits = std::abs(bytes - (last.offset + last.size)) <= double{kStreamBufferSize} + last.size;
  if (first.offset != headers || first.size <= 0 || headers + first.size > bytes || last.size <= 0 || !endFits)
    return false;
  std::array<char, kTraceHeaderBytes> header{};
  const std::size_t wanted = std::min<std::size_t>(header.size(), static_cast<std::size_t>(first.size));
  return readAt(traceTemp_.descriptor(), header.data(), wanted, static_cast<std::uint64_t>(headers)) == wanted &&
         holdsValue(header, first.primary) && holdsValue(header, first.secondary) && holdsValue(header, first.tertiary);
}

bool SortStore::mayEmpty() const {
  std::string names;
  for (const TempFile* file : {&traceTemp_, &indexTemp_}) names += file->size() > 0 ? file->path() + "\n" : "";
  const bool both = traceTemp_.size() > 0 && indexTemp_.size() > 0;
  if (xvt_dm_post_confirm("Overwrite", "Cancel",
                          "%s here before and %s not left over from a sort that was cut off:\n%sOverwrite %s?",
                          both ? "These files were" : "This file was", both ? "are" : "is", names.c_str(),
                          both ? "them" : "it") == RESP_DEFAULT)
    return true;
  console_printf("  ** %s stays as it is: choose another sort file.",
                 traceTemp_.size() > 0 ? tracePath_.c_str() : indexPath_.c_str());
  return false;
}

bool SortStore::empty() {
  if (traceTemp_.empty()) traceFile_ = openFile(traceTemp_.path().c_str(), "r+b", 0);
  if (traceFile_ == nullptr || !traceTemp_.isInPlace()) {
    console_printf("  *** Error creating temporary file %s.", tracePath_.c_str());
    return false;
  }
  disk_.begin(traceFile_.get(), tracePath_.c_str());
  if (indexTemp_.empty()) indexFile_ = openFile(indexTemp_.path().c_str(), "r+b");
  return (indexFile_ != nullptr && indexTemp_.isInPlace()) || say("  *** Error creating SegyCopy.idx file.");
}

// ---- writing ----------------------------------------------------------------------------------------------------

bool SortStore::addHeader(const std::vector<char>& header, const char* traceFileError, const char* indexError) {
  const int bytes = static_cast<int>(header.size());
  if (!disk_.write(header, false)) return say(traceFileError);
  written_ += bytes;
  return std::fwrite(&bytes, sizeof bytes, 1, indexFile_.get()) == 1 || say(indexError);
}

bool SortStore::addEbcdic(const std::vector<char>& header) {
  return addHeader(header, "  *** Error writing EBCDIC header to temporary file.",
                   "  *** Error writing to index file.");
}

bool SortStore::addBinary(const std::vector<char>& header) {
  return addHeader(header, "  *** Error writing binary header to temporary file",
                   "  *** Error writing to index file") &&
         flush();
}

bool SortStore::addTrace(std::span<const char> trace) {
  const SgyCopyParams& params = SgyParams;
  const SortItem item = {HeaderKey{params.sortPrimByte, params.sortPrimType}.in(trace.data()),
                         HeaderKey{params.sortSecByte, params.sortSecType}.in(trace.data()),
                         params.useTertiary ? HeaderKey{params.sortTerByte, params.sortTerType}.in(trace.data()) : 0.0,
                         written_, static_cast<int>(trace.size())};
  if (unflushed_ + trace.size() > kStreamBufferSize && !flush()) return false;
  if (kept_ == INT_MAX || !disk_.writeLent({}, trace, true)) return sayLost(1);
  written_ += item.size;
  if (std::fwrite(&item, sizeof item, 1, indexFile_.get()) != 1) return say("  *** Error writing to index file");
  unflushed_ += trace.size();
  return ++kept_ > 1 || flush();
}

/// Names the first trace that was lost. @param refused how many of them were not accepted
bool SortStore::sayLost(int refused) const {
  const double first = static_cast<double>(kept_) + refused - std::max(disk_.lost().traces, 1) + 1;
  console_printf("  *** Error writing sort trace %.0f to temporary file", std::max(first, 1.0));
  return false;
}

/// In step, so that a killed program's files are known again.
bool SortStore::flush() {
  unflushed_ = 0;
  if (!disk_.flush()) return sayLost(0);
  return std::fflush(indexFile_.get()) == 0 || say("  *** Error writing to index file");
}

// ---- reading ----------------------------------------------------------------------------------------------------

bool SortStore::reopen() {
  // The buffers' last bytes go to the disk only here.
  if (!flush()) return false;
  if (!closeFile(traceFile_)) return sayLost(0);
  if (SgyParams.keepSortFile) sync_.add(traceTemp_.descriptor(), traceTemp_.path());
  if (!closeFile(indexFile_)) return say("  *** Error writing to index file");
  traces_ = openFile(traceTemp_.path().c_str(), "rb", 0);
  if (!traces_ || !traceTemp_.isInPlace()) {
    console_printf("  *** Error opening temporary file %s.", tracePath_.c_str());
    return false;
  }
  indexFile_ = openFile(indexTemp_.path().c_str(), "rb");
  if (!indexFile_ || !indexTemp_.isInPlace()) return say("  *** Error opening SegyCopy.idx file.");
  traceFileSize_ = static_cast<off_t>(fileSize(traces_.get()).value_or(0));
  return true;
}

bool SortStore::save() {
  if (!SgyParams.keepSortFile) return true;
  if (traceFile_) {  // the job ended before its output
    if (!disk_.flush()) return say(diskErrorText(tracePath_, errno).c_str());
    sync_.add(traceTemp_.descriptor(), traceTemp_.path());
  }
  return sync_.wait([](const DiskSync::Failure& failure) { say(diskErrorText(failure).c_str()); });
}

bool SortStore::readHeader(const char* name, std::vector<char>* header) {
  int bytes = 0;
  if (std::fread(&bytes, sizeof bytes, 1, indexFile_.get()) == 1 && bytes >= 0 &&
      bytes <= traceFileSize_ - headersRead_) {
    header->resize(static_cast<std::size_t>(bytes));
    if (readAt(fileno(traces_.get()), header->data(), header->size(), static_cast<std::uint64_t>(headersRead_)) ==
        header->size()) {
      headersRead_ += bytes;
      return true;
    }
  }
  console_printf("  *** Error reading %s header from temporary file", name);
  return false;
}

bool SortStore::sortIndex() {
  const auto count = static_cast<std::size_t>(kept_);
  try {
    items_.resize(count);
  } catch (const std::bad_alloc&) {
    return say("  *** Not enough memory for the index of the traces.");
  }
  if (std::fread(items_.data(), sizeof(SortItem), count, indexFile_.get()) != count)
    return say("  *** Error reading from index file");
  segySort(reinterpret_cast<char*>(items_.data()), kept_, sizeof(SortItem));
  return true;
}

const SortItem& SortStore::itemAt(int place) const {
  return items_[static_cast<std::size_t>(SgyParams.reverseSort ? kept_ - 1 - place : place)];
}

/// The index has been on disk, where anything may happen to it.
bool SortStore::isSound(const SortItem& item) const {
  const double offset = item.offset;
  return item.size > 0 && offset >= 0 && offset + item.size <= static_cast<double>(traceFileSize_);
}

/// What starts at a place of the output is the batch, and what follows is read beside.
bool SortStore::load(int place) {
  if (beforeRefill) beforeRefill();
  side_.wait();
  if (next_.first == place) std::swap(batch_, next_);
  if (batch_.first != place || batch_.end == place) fill(&batch_, place);
  batchPlace_ = 0;
  next_.first = next_.end = batch_.end;
  if (batch_.end == place) return false;
  if (batch_.end < kept_) side_.start([this] { fillNext(); });
  return true;
}

void SortStore::fillNext() {
  try {
    fill(&next_, next_.first);
  } catch (const std::bad_alloc&) {
    // Who needs these traces tries once more.
  }
}

/// Fills a batch from `place` on. Traces that lie one after another are read in one piece. It stays empty when one
/// cannot be read.
void SortStore::fill(Batch* batch, int place) const {
  batch->first = batch->end = place;
  if (batch->bytes.size() < kBatchBytes) batch->bytes.resize(kBatchBytes);
  std::size_t filled = 0;
  int next = place;
  while (next < kept_ && (next == place || filled + static_cast<std::size_t>(itemAt(next).size) <= kBatchBytes)) {
    const SortItem& first = itemAt(next);
    if (!isSound(first)) break;
    std::size_t bytes = 0;
    do {
      bytes += static_cast<std::size_t>(itemAt(next).size);
      ++next;
    } while (next < kept_ && isSound(itemAt(next)) &&
             itemAt(next).offset == first.offset + static_cast<double>(bytes) &&
             filled + bytes + static_cast<std::size_t>(itemAt(next).size) <= kBatchBytes);
    if (batch->bytes.size() < filled + bytes) batch->bytes.resize(filled + bytes);
    if (readAt(fileno(traces_.get()), batch->bytes.data() + filled, bytes, static_cast<std::uint64_t>(first.offset)) !=
        bytes)
      return;
    filled += bytes;
  }
  batch->end = next;
}

std::span<const char> SortStore::trace(int place) {
  if ((place < batch_.first || place >= batch_.end) && !load(place)) return {};
  const std::span<const char> piece(batch_.bytes.data() + batchPlace_, static_cast<std::size_t>(itemAt(place).size));
  batchPlace_ += piece.size();
  return piece;
}
