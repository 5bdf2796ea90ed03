#include "quarlo/tapelib/formats/tracekey.h"

#include "libkyr/byteorder.h"

const char* const DataTypes[4] = {"1 byte integer", "2 byte integer", "4 byte integer", "4 byte float"};

double getValue(const char* ptr, int dataType) {
  switch (dataType) {
    case DT_INT8:
      return static_cast<signed char>(*ptr);
    case DT_INT16:
      return loadBeInt16(ptr);
    case DT_INT32:
      return loadBeInt32(ptr);
    case DT_FLOAT32:
      return loadBeFloat(ptr);
    default:
      return 0.0;
  }
}

int valueBytes(int dataType) {
  constexpr int kBytes[] = {1, 2, 4, 4};
  return dataType >= DT_INT8 && dataType <= DT_FLOAT32 ? kBytes[dataType] : 0;
}
