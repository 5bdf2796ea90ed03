#include "libkyr/byteorder.h"

namespace {

template <typename U>
void swapWords(void* words, std::size_t count) {
  auto* bytes = static_cast<unsigned char*>(words);
  for (const unsigned char* end = bytes + count * sizeof(U); bytes != end; bytes += sizeof(U))
    byteorder::storeLittle(bytes, byteorder::loadBig<U>(bytes));
}

}  // namespace

void byteswap(void* words, std::size_t count) { swapWords<std::uint16_t>(words, count); }
void longswap(void* words, std::size_t count) { swapWords<std::uint32_t>(words, count); }
void doubleswap(void* words, std::size_t count) { swapWords<std::uint64_t>(words, count); }
