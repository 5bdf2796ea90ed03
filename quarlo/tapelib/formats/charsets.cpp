#include "quarlo/tapelib/formats/charsets.h"

#include <algorithm>
#include <array>

namespace {

constexpr char kSubstitute = 0x3F;

// The EBCDIC codes of ASCII 0 to 127 in code page 037.
constexpr std::array<unsigned char, kA2eTableSize> kCodePage037 = {
    0x00, 0x01, 0x02, 0x03, 0x37, 0x2D, 0x2E, 0x2F, 0x16, 0x05, 0x25, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F,  // NUL ...
    0x10, 0x11, 0x12, 0x13, 0x3C, 0x3D, 0x32, 0x26, 0x18, 0x19, 0x3F, 0x27, 0x1C, 0x1D, 0x1E, 0x1F,  // DLE ...
    0x40, 0x5A, 0x7F, 0x7B, 0x5B, 0x6C, 0x50, 0x7D, 0x4D, 0x5D, 0x5C, 0x4E, 0x6B, 0x60, 0x4B, 0x61,  // blank ... /
    0xF0, 0xF1, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF7, 0xF8, 0xF9, 0x7A, 0x5E, 0x4C, 0x7E, 0x6E, 0x6F,  // 0 ... ?
    0x7C, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 0xC9, 0xD1, 0xD2, 0xD3, 0xD4, 0xD5, 0xD6,  // @ ... O
    0xD7, 0xD8, 0xD9, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6, 0xE7, 0xE8, 0xE9, 0xBA, 0xE0, 0xBB, 0xB0, 0x6D,  // P ... _
    0x79, 0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x88, 0x89, 0x91, 0x92, 0x93, 0x94, 0x95, 0x96,  // ` ... o
    0x97, 0x98, 0x99, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7, 0xA8, 0xA9, 0xC0, 0x4F, 0xD0, 0xA1, 0x07,  // p ... DEL
};

struct Pair {
  int ascii;
  int ebcdic;
};

// Where both ways leave the code page.
constexpr Pair kExceptions[] = {{'#', 0x4A}, {'[', 0xAD}, {']', 0xBD}, {'^', 0x5F},
                                {'{', 0x8B}, {'|', 0x6A}, {'}', 0x9B}, {'~', 0x60}};
// DC3 leaves as DC4 does; both read back as themselves.
constexpr Pair kDeviceControl3 = {19, 0x3C};

}  // namespace

void initAtable(int* a2eTable) { std::copy(kCodePage037.begin(), kCodePage037.end(), a2eTable); }

void initBtable(int* a2eTable) {
  for (const Pair& pair : kExceptions) a2eTable[pair.ascii] = pair.ebcdic;
  a2eTable[kDeviceControl3.ascii] = kDeviceControl3.ebcdic;
}

void initEtable(int* e2aTable) {
  for (int ascii = 0; ascii < kA2eTableSize; ++ascii) e2aTable[kCodePage037[static_cast<unsigned>(ascii)]] = ascii;
}

void initFtable(int* e2aTable) {
  for (const Pair& pair : kExceptions) e2aTable[pair.ebcdic] = pair.ascii;
}

void initascebc(int* a2eTable, int* e2aTable) {
  std::fill_n(e2aTable, kE2aTableSize, ' ');
  initAtable(a2eTable);
  initBtable(a2eTable);
  initEtable(e2aTable);
  initFtable(e2aTable);
}

void asc2ebc(const char* stringAsc, char* stringEbc, int numbytes, const int* a2eTable) {
  if (numbytes < 0) return;
  for (int i = 0; i < numbytes; ++i) {
    const auto code = static_cast<unsigned char>(stringAsc[i]);
    stringEbc[i] = code < kA2eTableSize ? static_cast<char>(a2eTable[code]) : kSubstitute;
  }
  stringEbc[numbytes] = '\0';
}

void ebc2asc(const char* stringEbc, char* stringAsc, int numbytes, const int* e2aTable) {
  if (numbytes < 0) return;
  for (int i = 0; i < numbytes; ++i)
    stringAsc[i] = static_cast<char>(e2aTable[static_cast<unsigned char>(stringEbc[i])]);
  stringAsc[numbytes] = '\0';
}
