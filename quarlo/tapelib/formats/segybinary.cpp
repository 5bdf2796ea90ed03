#include "quarlo/tapelib/formats/segybinary.h"

namespace {

constexpr int FORMATS = 16;
constexpr int SAMPLE_BYTES[FORMATS] = {4, 4, 2, 4, 4, 8, 3, 1, 8, 4, 2, 8, 4, 4, 3, 1};

}  // namespace

bool isSegyFormat(int code) { return code >= 1 && code <= FORMATS; }

int segySampleBytes(int code) { return isSegyFormat(code) ? SAMPLE_BYTES[code - 1] : 0; }
