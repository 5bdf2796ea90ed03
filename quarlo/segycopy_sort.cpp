#include "quarlo/segycopy_sort.h"

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <new>

#include "libkyr/text.h"
#include "quarlo/segycopy_params.h"
#include "quarlo/tapelib/cons_win.h"

namespace {

constexpr const char* INDEX_NAME = "SegyCopy.idx";
constexpr std::size_t BATCH_BYTES = std::size_t{1} << 20;

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

SortStore::~SortStore() {
  traceFile.reset();
  indexFile.reset();
  traces.reset();
  if (indexMade) {
    (void)unlink(indexPath.c_str());
  }
  if (traceFileMade && !SgyParams.keepSortFile) {
    (void)unlink(tracePath.c_str());
  }
}

bool SortStore::create(const FileSet& taken) {
  tracePath = absolutePath(joinPath(fieldText(SgyParams.sortDir), fieldText(SgyParams.sortFile)));
  indexPath = absolutePath(joinPath(fieldText(SgyParams.sortDir), INDEX_NAME));
  for (const std::string& path : {tracePath, indexPath}) {
    if (taken.holds(path)) {
      return refuse(path);
    }
  }
  if (sameFile(tracePath.c_str(), indexPath.c_str())) {
    return refuse(tracePath);
  }
  traceFile = std::make_unique<LargeFile>(tracePath.c_str(), "wb");
  traceFileMade = traceFile->IsValid();
  if (!traceFileMade) {
    console_printf("  *** Error creating temporary file %s.", tracePath.c_str());
    return false;
  }
  indexFile = openFile(indexPath.c_str(), "wb");
  indexMade = indexFile != nullptr;
  return indexMade || say("  *** Error creating SegyCopy.idx file.");
}

// ---- writing ----------------------------------------------------------------------------------------------------

bool SortStore::addHeader(const std::vector<char>& header, const char* traceFileError, const char* indexError) {
  const int bytes = static_cast<int>(header.size());
  if (traceFile->Write(header.data(), bytes) != bytes) {
    return say(traceFileError);
  }
  return std::fwrite(&bytes, sizeof bytes, 1, indexFile.get()) == 1 || say(indexError);
}

bool SortStore::addEbcdic(const std::vector<char>& header) {
  return addHeader(header, "  *** Error writing EBCDIC header to temporary file.",
                   "  *** Error writing to index file.");
}

bool SortStore::addBinary(const std::vector<char>& header) {
  return addHeader(header, "  *** Error writing binary header to temporary file", "  *** Error writing to index file");
}

bool SortStore::addTrace(std::span<const char> trace) {
  const SgyCopyParams& params = SgyParams;
  const SortItem item = {HeaderKey{params.sortPrimByte, params.sortPrimType}.in(trace.data()),
                         HeaderKey{params.sortSecByte, params.sortSecType}.in(trace.data()),
                         params.useTertiary ? HeaderKey{params.sortTerByte, params.sortTerType}.in(trace.data()) : 0.0,
                         traceFile->GetPos(), static_cast<int>(trace.size())};
  if (kept == INT_MAX || traceFile->Write(trace.data(), item.size) != item.size) {
    console_printf("  *** Error writing sort trace %d to temporary file", kept + 1);
    return false;
  }
  if (std::fwrite(&item, sizeof item, 1, indexFile.get()) != 1) {
    return say("  *** Error writing to index file");
  }
  ++kept;
  return true;
}

// ---- reading ----------------------------------------------------------------------------------------------------

bool SortStore::reopen() {
  // The buffers' last bytes go to the disk only here.
  if (!traceFile->Close()) {
    console_printf("  *** Error writing sort trace %d to temporary file", std::max(kept, 1));
    return false;
  }
  if (!closeFile(indexFile)) {
    return say("  *** Error writing to index file");
  }
  traces = openFile(tracePath.c_str(), "rb", 0);
  if (!traces) {
    console_printf("  *** Error opening temporary file %s.", tracePath.c_str());
    return false;
  }
  indexFile = openFile(indexPath.c_str(), "rb");
  if (!indexFile) {
    return say("  *** Error opening SegyCopy.idx file.");
  }
  traceFileSize = static_cast<off_t>(fileSize(traces.get()).value_or(0));
  return true;
}

bool SortStore::readHeader(const char* name, std::vector<char>* header) {
  int bytes = 0;
  if (std::fread(&bytes, sizeof bytes, 1, indexFile.get()) == 1 && bytes >= 0 && bytes <= traceFileSize - headersRead) {
    header->resize(static_cast<std::size_t>(bytes));
    if (readAt(fileno(traces.get()), header->data(), header->size(), static_cast<std::uint64_t>(headersRead)) ==
        header->size()) {
      headersRead += bytes;
      return true;
    }
  }
  console_printf("  *** Error reading %s header from temporary file", name);
  return false;
}

bool SortStore::sortIndex() {
  const auto count = static_cast<std::size_t>(kept);
  try {
    items.resize(count);
  } catch (const std::bad_alloc&) {
    return say("  *** Not enough memory for the index of the traces.");
  }
  if (std::fread(items.data(), sizeof(SortItem), count, indexFile.get()) != count) {
    return say("  *** Error reading from index file");
  }
  segySort(reinterpret_cast<char*>(items.data()), kept, sizeof(SortItem));
  return true;
}

const SortItem& SortStore::itemAt(int place) const {
  return items[static_cast<std::size_t>(SgyParams.reverseSort ? kept - 1 - place : place)];
}

/// The index has been on disk, where anything may happen to it.
bool SortStore::isSound(const SortItem& item) const {
  const double offset = item.offset;
  return item.size > 0 && offset >= 0 && offset + item.size <= static_cast<double>(traceFileSize);
}

/// Fills the batch from `place` on. Traces that lie one after another are read in one piece.
bool SortStore::loadFrom(int place) {
  batch.clear();
  batchFirst = place;
  batchPlace = 0;
  int next = place;
  while (next < kept && (next == place || batch.size() + static_cast<std::size_t>(itemAt(next).size) <= BATCH_BYTES)) {
    const SortItem& first = itemAt(next);
    if (!isSound(first)) {
      break;
    }
    std::size_t bytes = 0;
    do {
      bytes += static_cast<std::size_t>(itemAt(next).size);
      ++next;
    } while (next < kept && isSound(itemAt(next)) && itemAt(next).offset == first.offset + static_cast<double>(bytes) &&
             batch.size() + bytes + static_cast<std::size_t>(itemAt(next).size) <= BATCH_BYTES);
    const std::size_t before = batch.size();
    batch.resize(before + bytes);
    if (readAt(fileno(traces.get()), batch.data() + before, bytes, static_cast<std::uint64_t>(first.offset)) != bytes) {
      return false;
    }
  }
  batchEnd = next;
  return next > place;
}

std::span<const char> SortStore::trace(int place) {
  if ((place < batchFirst || place >= batchEnd) && !loadFrom(place)) {
    return {};
  }
  const std::span<const char> piece(batch.data() + batchPlace, static_cast<std::size_t>(itemAt(place).size));
  batchPlace += piece.size();
  return piece;
}
