#include "quarlo/segycopy/segysort.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <numeric>
#include <optional>
#include <vector>

namespace {

double valueAt(const char* item, std::size_t place) {
  double value = 0;
  std::memcpy(&value, item + place * sizeof value, sizeof value);
  return value;
}

bool hasThreeKeys(int size) { return size == kThreeKeyBytes; }

int compareLast(double one, double other) { return one < other ? -1 : one == other ? 0 : 1; }

// ---- the heap over the items themselves -------------------------------------------------------------------------

void sift(std::size_t left, std::size_t right, char* vect, int size) {
  const auto bytes = static_cast<std::size_t>(size);
  const auto at = [vect, bytes](std::size_t item) { return vect + (item - 1) * bytes; };
  std::array<char, kSortScratchBytes> held;
  std::memcpy(held.data(), at(left), bytes);
  std::size_t i = left;
  for (std::size_t j = 2 * left; j <= right; j *= 2) {
    if (j < right && compareItems(at(j), at(j + 1), size) < 0) ++j;
    if (compareItems(at(j), held.data(), size) < 0) break;
    std::memcpy(at(i), at(j), bytes);
    i = j;
  }
  std::memcpy(at(i), held.data(), bytes);
}

void sortItems(char* vect, std::size_t samples, int size) {
  for (std::size_t left = samples / 2; left >= 1; --left) sift(left, samples, vect, size);
  const auto bytes = static_cast<std::size_t>(size);
  for (std::size_t right = samples; right > 1; --right) {
    std::swap_ranges(vect, vect + bytes, vect + (right - 1) * bytes);
    sift(1, right - 1, vect, size);
  }
}

// ---- the same heap over short codes -----------------------------------------------------------------------------
// Millions of items do not fit the caches, and a heap touches them all over the place. So where the values allow it,
// each item gets a code that compares as its values do, the codes with the places of their items go through the heap,
// and the items follow them at the end. The order that comes out is the same, equal items included.

/// How one column of values becomes whole numbers of few bits that compare as the values do.
enum class Coding { Integer, Float, Double };

constexpr double kExactInteger = 9007199254740992.0;  // up to here a double holds every integer

/// Bits that compare as the numbers do; a negative zero counts as zero.
template <typename Word, typename Number>
Word orderedBits(Number value) {
  const Word bits = std::bit_cast<Word>(value + Number{0});
  constexpr Word kSign = Word{1} << (std::numeric_limits<Word>::digits - 1);
  return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

bool isFloat(double value) {
  return std::isinf(value) || (std::abs(value) <= static_cast<double>(std::numeric_limits<float>::max()) &&
                               static_cast<double>(static_cast<float>(value)) == value);
}

std::uint64_t codeOf(double value, Coding coding) {
  switch (coding) {
    case Coding::Integer:
      return static_cast<std::uint64_t>(static_cast<std::int64_t>(value)) ^ (std::uint64_t{1} << 63);
    case Coding::Float:
      return orderedBits<std::uint32_t>(static_cast<float>(value));
    default:
      return orderedBits<std::uint64_t>(value);
  }
}

/// One column's coding, its smallest code and the bits that the codes need from there.
struct Column {
  Coding coding = Coding::Integer;
  std::uint64_t lowest = 0;
  int bits = 0;
};

struct Items {
  const char* first;
  std::size_t count;
  std::size_t bytes;
  double value(std::size_t item, std::size_t column) const { return valueAt(first + item * bytes, column); }
};

/// Nothing when there is a NaN, which has no place in any order.
std::optional<Column> describe(const Items& items, std::size_t place) {
  bool integers = true;
  bool floats = true;
  double low = items.value(0, place);
  double high = low;
  for (std::size_t i = 0; i < items.count; ++i) {
    const double value = items.value(i, place);
    if (std::isnan(value)) return std::nullopt;
    integers = integers && std::abs(value) <= kExactInteger && std::trunc(value) == value;
    floats = floats && isFloat(value);
    low = std::min(low, value);
    high = std::max(high, value);
  }
  const Coding coding = integers ? Coding::Integer : floats ? Coding::Float : Coding::Double;
  const std::uint64_t lowest = codeOf(low, coding);
  return Column{coding, lowest, static_cast<int>(std::bit_width(codeOf(high, coding) - lowest))};
}

/// A code and its item's place in one word: the place fills the low `placeBits`.
struct ShortEntries {
  using Entry = std::uint64_t;
  int placeBits;
  Entry make(std::uint64_t code, std::size_t place) const { return code << placeBits | place; }
  bool below(Entry one, Entry other) const { return one >> placeBits < other >> placeBits; }
  std::size_t place(Entry entry) const { return entry & ((std::uint64_t{1} << placeBits) - 1); }
};

struct LongEntries {
  struct Entry {
    std::uint64_t code;
    std::uint64_t place;
  };
  static Entry make(std::uint64_t code, std::size_t place) { return {code, place}; }
  static bool below(const Entry& one, const Entry& other) { return one.code < other.code; }
  static std::size_t place(const Entry& entry) { return entry.place; }
};

/// The item aside falls to the bottom along the larger children and then rises to where it belongs: half as many
/// comparisons as on the way down, the same place.
template <typename Kind>
void siftCodes(const Kind& kind, std::size_t left, std::size_t right, typename Kind::Entry* heap) {
  const auto held = heap[left];
  std::size_t i = left;
  std::size_t j = 2 * left;
  for (; j < right; j *= 2) {
    __builtin_prefetch(heap + std::min(j * 8, right));
    j += kind.below(heap[j], heap[j + 1]) ? 1 : 0;
    heap[i] = heap[j];
    i = j;
  }
  if (j == right) {
    heap[i] = heap[j];
    i = j;
  }
  for (; i > left && kind.below(heap[i / 2], held); i /= 2) heap[i] = heap[i / 2];
  heap[i] = held;
}

/// Brings the items into the order of the sorted entries (from 1) beside a copy of them all.
template <typename Kind>
void arrangeFromCopy(const Kind& kind, const std::vector<typename Kind::Entry>& entries, char* vect,
                     std::size_t bytes) {
  constexpr std::size_t kAhead = 16;
  const std::vector<char> copy(vect, vect + (entries.size() - 1) * bytes);
  for (std::size_t i = 1; i < entries.size(); ++i) {
    __builtin_prefetch(copy.data() + kind.place(entries[std::min(i + kAhead, entries.size() - 1)]) * bytes);
    std::memcpy(vect + (i - 1) * bytes, copy.data() + kind.place(entries[i]) * bytes, bytes);
  }
}

/// The same without a copy, cycle by cycle: slower, for indexes of many millions. The entries are used up.
template <typename Kind>
void arrangeInPlace(const Kind& kind, std::vector<typename Kind::Entry>& entries, char* vect, std::size_t bytes) {
  std::vector<char> held(bytes);
  for (std::size_t start = 0; start + 1 < entries.size(); ++start) {
    std::size_t from = kind.place(entries[start + 1]);
    if (from == start) continue;
    std::memcpy(held.data(), vect + start * bytes, bytes);
    std::size_t to = start;
    for (; from != start; from = kind.place(entries[to + 1])) {
      std::memcpy(vect + to * bytes, vect + from * bytes, bytes);
      entries[to + 1] = kind.make(0, to);
      to = from;
    }
    std::memcpy(vect + to * bytes, held.data(), bytes);
    entries[to + 1] = kind.make(0, to);
  }
}

/// Bytes that sorting may take beside the items and their codes.
constexpr std::size_t kCopyLimit = std::size_t{48} << 20;

template <typename Kind>
void fillEntries(const Kind& kind, const Items& items, const std::vector<Column>& columns,
                 std::vector<typename Kind::Entry>* entries) {
  for (std::size_t i = 0; i < items.count; ++i) {
    std::uint64_t code = 0;
    for (std::size_t place = 0; place < columns.size(); ++place) {
      const Column& column = columns[place];
      if (column.bits > 0) {
        code = (column.bits < 64 ? code << column.bits : 0) |
               (codeOf(items.value(i, place), column.coding) - column.lowest);
      }
    }
    (*entries)[i + 1] = kind.make(code, i);
  }
}

/// Brings entries into the order of their codes, digit by digit from the lowest.
void radixSort(const ShortEntries& kind, int bits, std::vector<std::uint64_t>* entries) {
  constexpr int kDigitBits = 11;
  std::vector<std::uint64_t> other(entries->size());
  for (int shift = kind.placeBits; shift < kind.placeBits + bits; shift += kDigitBits) {
    const auto digit = [shift](std::uint64_t entry) { return entry >> shift & ((1U << kDigitBits) - 1); };
    std::array<std::size_t, (1U << kDigitBits) + 1> starts{};
    for (std::size_t i = 1; i < entries->size(); ++i) ++starts[digit((*entries)[i]) + 1];
    std::partial_sum(starts.begin(), starts.end(), starts.begin());
    for (std::size_t i = 1; i < entries->size(); ++i) other[1 + starts[digit((*entries)[i])]++] = (*entries)[i];
    entries->swap(other);
  }
}

/// Without equal items there is one order only, and the fastest way to it will do.
/// @param bits of a code: too few of them for all items, and some are equal for certain
/// @return false when there are equal items, or no fast way; the entries are then in no order that counts
bool sortDistinct(const ShortEntries& kind, int bits, std::vector<std::uint64_t>* entries) {
  if (bits < kind.placeBits - 1) return false;
  radixSort(kind, bits, entries);
  const auto notBelow = [&kind](std::uint64_t one, std::uint64_t next) { return !kind.below(one, next); };
  return std::adjacent_find(entries->begin() + 1, entries->end(), notBelow) == entries->end();
}

bool sortDistinct(const LongEntries& /*kind*/, int /*bits*/, std::vector<LongEntries::Entry>* /*entries*/) {
  return false;
}

template <typename Kind>
void heapSort(const Kind& kind, std::vector<typename Kind::Entry>* entries) {
  auto* const heap = entries->data();
  const std::size_t count = entries->size() - 1;
  for (std::size_t left = count / 2; left >= 1; --left) siftCodes(kind, left, count, heap);
  for (std::size_t right = count; right > 1; --right) {
    std::swap(heap[1], heap[right]);
    siftCodes(kind, 1, right - 1, heap);
  }
}

/// @param bits of a code
template <typename Kind>
void sortCodes(const Kind& kind, const Items& items, const std::vector<Column>& columns, int bits, char* vect) {
  std::vector<typename Kind::Entry> entries(items.count + 1);
  const bool roomy = items.count <= kCopyLimit / items.bytes;
  fillEntries(kind, items, columns, &entries);
  if (!roomy || !sortDistinct(kind, bits, &entries)) {
    fillEntries(kind, items, columns, &entries);
    heapSort(kind, &entries);
  }
  if (roomy)
    arrangeFromCopy(kind, entries, vect, items.bytes);
  else
    arrangeInPlace(kind, entries, vect, items.bytes);
}

/// @return false when the values do not fit a code, or memory is short: nothing has been moved then
bool sortByCodes(char* vect, std::size_t count, int size) {
  const Items items{vect, count, static_cast<std::size_t>(size)};
  std::vector<Column> columns;
  int bits = 0;
  for (std::size_t place = 0; place < (hasThreeKeys(size) ? 3U : 2U); ++place) {
    const std::optional<Column> column = describe(items, place);
    if (!column) return false;
    bits += column->bits;
    columns.push_back(*column);
  }
  if (bits > 64) return false;
  const int placeBits = static_cast<int>(std::bit_width(count));
  try {
    if (bits + placeBits <= 64)
      sortCodes(ShortEntries{placeBits}, items, columns, bits, vect);
    else
      sortCodes(LongEntries{}, items, columns, bits, vect);
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

}  // namespace

int compareItems(const char* item1, const char* item2, int itemSize) {
  const double first1 = valueAt(item1, 0);
  const double first2 = valueAt(item2, 0);
  if (first1 != first2) return first1 < first2 ? -1 : 1;
  const double second1 = valueAt(item1, 1);
  const double second2 = valueAt(item2, 1);
  if (second1 != second2 || !hasThreeKeys(itemSize)) return compareLast(second1, second2);
  return compareLast(valueAt(item1, 2), valueAt(item2, 2));
}

void segySift(int left, int right, char* vect, int size) {
  sift(static_cast<std::size_t>(left), static_cast<std::size_t>(right), vect, size);
}

void segySort(char* vect, int samples, int size) {
  if (samples < 2 || size < 2 * static_cast<int>(sizeof(double)) || size > kSortScratchBytes) return;
  const auto count = static_cast<std::size_t>(samples);
  if (!sortByCodes(vect, count, size)) sortItems(vect, count, size);
}
