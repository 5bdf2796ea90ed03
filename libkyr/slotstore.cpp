#include "libkyr/slotstore.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

namespace {

/// Bytes of one read or write of slots in a row. More is no faster.
constexpr std::size_t kPieceSize = std::size_t{256} * 1024;

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
    const std::size_t size = window_.endsAt(place) ? wholeSlots(place.size) : place.size;
    window_.place = {};
    unsigned char* const bytes = window_.make(size);
    const auto count = bytes != nullptr ? parts_[static_cast<std::size_t>(place.part)].readAt(place.offset, bytes, size)
                                        : std::nullopt;
    if (!count) return nullptr;
    window_.place = {place.part, place.offset, *count};
  }
  const auto begin = static_cast<std::size_t>(place.offset - window_.place.offset);
  *got = std::min(window_.place.size - begin, place.size);
  return window_.bytes.get() + begin;
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
  const bool fits = pending_.endsAt(place) && pending_.place.size + place.size <= pending_.capacity;
  if (!fits) {
    if (!flush()) return nullptr;
    if (pending_.make(wholeSlots(place.size)) == nullptr) return nullptr;
    pending_.place = {place.part, place.offset, 0};
    pendingSlot_ = place.size;
  }
  unsigned char* const bytes = pending_.bytes.get() + pending_.place.size;
  pending_.place.size += place.size;
  return bytes;
}

bool SlotStore::flush() {
  const Place place = std::exchange(pending_.place, Place{});
  if (place.size == 0) return true;
  const PartFile& file = parts_[static_cast<std::size_t>(place.part)];
  const std::size_t taken = file.writeAt(place.offset, pending_.bytes.get(), place.size);
  lost_ += place.size / pendingSlot_ - taken / pendingSlot_;
  return taken == place.size;
}
