#include "quarlo/tapelib/formats/segybinary.h"

namespace {

constexpr int kFormats = 16;
constexpr int kSampleBytes[kFormats] = {4, 4, 2, 4, 4, 8, 3, 1, 8, 4, 2, 8, 4, 4, 3, 1};

}  // namespace

bool isSegyFormat(int code) { return code >= 1 && code <= kFormats; }

int segySampleBytes(int code) { return isSegyFormat(code) ? kSampleBytes[code - 1] : 0; }
