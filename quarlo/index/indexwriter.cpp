#include "quarlo/index/indexwriter.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <utility>
#include <vector>

#include "libkyr/nullvalue.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/loglines.h"

namespace {

template <typename Value>
Value orZero(Value value) {
  return IsValueNull(value) ? Value{} : value;
}

}  // namespace

bool IndexWriter::begin(const std::string& path, std::unique_ptr<IndexFile> header) {
  path_ = path;
  header_ = std::move(header);
  stream_ = openFile(path.c_str(), "wb", 0);
  if (!stream_ || !keepFromLockers(stream_.get())) {
    sayIfLocked(path);
    return fail();
  }
  if (!put(header_.get(), sizeof *header_, 0)) return false;
  defineKeys(header_.get());
  return true;
}

bool IndexWriter::take(int record, int trace, const TraceInfo& info) {
  if (count_ == std::numeric_limits<int>::max()) {
    console_out("  *** Error: an index file cannot count more live traces than these.");
    return false;
  }
  const IndexValues values = indexValues(info);
  setMinMax(header_.get(), count_, values.cmpLine, values.srcLine, values.rcvLine, values.cmpLoc, values.srcLoc,
            values.rcvLoc, values.offset, values.fieldFile);
  entry_.fileIndex = 1;
  entry_.recordNumber = record;
  entry_.traceNumber = trace;
  entry_.cmpLine = orZero(values.cmpLine);
  entry_.cmpLoc = orZero(values.cmpLoc);
  entry_.offset = orZero(values.offset);
  ++count_;
  return true;
}

bool IndexWriter::finish() {
  setHeaderMinMax(header_.get());
  header_->keyEntries = count_;
  header_->byteOffsetToIndexArrays = kIndexHeaderSize;
  if (!put(header_.get(), sizeof *header_, 0) || (count_ > 0 && !putEntries())) return false;
  return closeFile(stream_) || fail();
}

/// The last live trace stands first, and what follows is zero: all of them went through one slot.
bool IndexWriter::putEntries() {
  constexpr std::uint64_t kPiece = std::uint64_t{1024} * sizeof(indexarray);
  const std::uint64_t end = kIndexHeaderSize + static_cast<std::uint64_t>(count_) * sizeof(indexarray);
  std::uint64_t place = kIndexHeaderSize + sizeof(indexarray);
  if (!put(&entry_, sizeof entry_, kIndexHeaderSize)) return false;
  const std::vector<char> zeros(kPiece);
  for (; place < end; place += std::min(kPiece, end - place))
    if (!put(zeros.data(), std::min(kPiece, end - place), place)) return false;
  return true;
}

bool IndexWriter::put(const void* bytes, std::size_t size, std::uint64_t offset) {
  return writeAllAt(fileno(stream_.get()), bytes, size, offset) == size || fail();
}

bool IndexWriter::fail() {
  console_out(diskErrorText(path_, errno).c_str());
  return false;
}
