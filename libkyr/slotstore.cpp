#include "libkyr/slotstore.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

#include "libkyr/files.h"

namespace {

/// Bytes of one read or write of slots in a row: less is not worth the turn between two threads.
constexpr std::size_t kPieceSize = std::size_t{1024} * 1024;

std::size_t wholeSlots(std::size_t slotSize) { return std::max(kPieceSize / slotSize, std::size_t{1}) * slotSize; }

}  // namespace

unsigned char* SlotStore::Stretch::make(std::size_t size) {
  if (size > capacity) {
    bytes.reset(new (std::nothrow) unsigned char[size]);
    capacity = bytes ? size : 0;
  }
  if (!bytes) errno = ENOMEM;
  return bytes.get();
}

bool SlotStore::Stretch::covers(const Place& other) const {
  return place.part == other.part && other.offset >= place.offset &&
         other.offset + other.size <= place.offset + place.size;
}

bool SlotStore::Stretch::endsAt(const Place& other) const {
  return place.size > 0 && place.part == other.part && other.offset == place.offset + place.size;
}

const unsigned char* SlotStore::read(const Place& place, std::size_t* got) {
  if (!window_.covers(place)) {
    // Only who reads slots in a row gets more than was asked for.
    const bool isRow = window_.endsAt(place);
    const std::size_t size = isRow ? wholeSlots(place.size) : place.size;
    if (!wasReadAhead(place) && !readInto(&window_, place, size)) return nullptr;
    if (isRow && window_.place.size >= size) readAhead(size);
  }
  const auto begin = static_cast<std::size_t>(place.offset - window_.place.offset);
  *got = std::min(window_.place.size - begin, place.size);
  return window_.bytes.get() + begin;
}

bool SlotStore::readInto(Stretch* stretch, const Place& place, std::size_t size) {
  stretch->place = {};
  unsigned char* const bytes = stretch->make(size);
  const auto count =
      bytes != nullptr ? parts_[static_cast<std::size_t>(place.part)].readAt(place.offset, bytes, size) : std::nullopt;
  if (count) stretch->place = {place.part, place.offset, *count};
  return count.has_value();
}

/// Whether the slot is the first of what was read ahead, which is the window then. What could not be read ahead is read
/// once more by who needs it.
bool SlotStore::wasReadAhead(const Place& place) {
  if (!ahead_.isUnderWay()) return false;
  next_.place.size = ahead_.finish().value_or(0);
  if (!next_.covers(place)) return false;
  std::swap(window_, next_);
  return true;
}

/// Starts to read what stands behind the window.
void SlotStore::readAhead(std::size_t size) {
  if (next_.make(size) == nullptr) return;
  next_.place = {window_.place.part, window_.place.offset + window_.place.size, 0};
  ahead_.start(parts_[static_cast<std::size_t>(next_.place.part)].descriptor(), next_.place.offset,
               {reinterpret_cast<char*>(next_.bytes.get()), size});
}

bool SlotStore::readHead(const Place& place, unsigned char* bytes, std::size_t count, std::size_t* got) {
  if (window_.covers({place.part, place.offset, count})) {
    std::copy_n(window_.bytes.get() + (place.offset - window_.place.offset), count, bytes);
    *got = count;
    return true;
  }
  const auto read = parts_[static_cast<std::size_t>(place.part)].readAt(place.offset, bytes, count);
  *got = read.value_or(0);
  return read.has_value();
}

unsigned char* SlotStore::write(const Place& place) {
  window_.place = {};
  if (ahead_.isUnderWay()) (void)ahead_.finish();
  const bool fits = pending_.endsAt(place) && pending_.place.size + place.size <= pending_.capacity;
  if (!fits) {
    if (!handOver()) return nullptr;
    if (pending_.make(wholeSlots(place.size)) == nullptr) return nullptr;
    pending_.place = {place.part, place.offset, 0};
    pending_.slotSize = place.size;
  }
  unsigned char* const bytes = pending_.bytes.get() + pending_.place.size;
  pending_.place.size += place.size;
  return bytes;
}

bool SlotStore::flush() {
  if (!handOver()) return false;
  writing_.wait();
  return account(&leaving_);
}

/// Starts to write what was made, when what went before has arrived: behind a hole nothing is written.
bool SlotStore::handOver() {
  writing_.wait();
  if (!account(&leaving_)) {
    const int reason = errno;
    pending_.taken = 0;
    account(&pending_);
    errno = reason;
    return false;
  }
  if (pending_.place.size == 0) return true;
  std::swap(pending_, leaving_);
  writing_.start([this] { store(&leaving_); });
  return true;
}

void SlotStore::store(Load* load) const {
  const PartFile& file = parts_[static_cast<std::size_t>(load->place.part)];
  load->taken = file.writeAt(load->place.offset, load->bytes.get(), load->place.size);
  load->error = load->taken < load->place.size ? errno : 0;
  if (load->taken >= kDiskStretch / 2) startToDisk(file.descriptor(), load->place.offset, load->taken);
}

/// Counts what a load lost; it is empty then. @return false with errno when it lost something
bool SlotStore::account(Load* load) {
  const std::size_t size = std::exchange(load->place, Place{}).size;
  if (size == 0) return true;
  lost_ += size / load->slotSize - load->taken / load->slotSize;
  errno = load->error;
  return load->taken == size;
}
