/// Keys of SEG Y trace headers: a 1-based byte position in the 240-byte header and a data type code. All fields are
/// big-endian.
#pragma once

constexpr int kTraceHeaderBytes = 240;

/// Data type codes of header fields.
enum DATA_TYPE : int { DT_INT8 = 0, DT_INT16 = 1, DT_INT32 = 2, DT_FLOAT32 = 3 };

/// Their names as dialogs and reports show them.
extern const char* const DataTypes[4];

/// The field at `ptr` as a number; 0.0 for a code that is none. The caller vouches for valueBytes(dataType) bytes.
double getValue(const char* ptr, int dataType);
/// Bytes of a field of this type; 0 for a code that is none.
int valueBytes(int dataType);

struct HeaderKey {
  int byte;  ///< position of the first byte, from 1
  int type;  ///< DATA_TYPE

  int end() const { return byte - 1 + valueBytes(type); }  ///< header bytes that the key needs
  double in(const char* trace) const { return getValue(trace + byte - 1, type); }
};
