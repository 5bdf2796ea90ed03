/// Type codes of values in memory and in headers.
#pragma once

/// The type of the variable behind a `void*`; also of a field in a SEG Y header.
enum KyrType : int {
  byteType = 2,         ///< std::int8_t
  shortIntType = 3,     ///< std::int16_t
  longIntType = 4,      ///< std::int32_t
  singleFloatType = 5,  ///< float
  doubleFloatType = 6,  ///< double

  // Of header fields only: the calls that take or give properties refuse them.
  unsignedByteType = 102,   ///< std::uint8_t
  unsignedShortType = 103,  ///< std::uint16_t
  unsignedLongType = 104,   ///< std::uint32_t
  int64Type = 108,          ///< std::int64_t
  unsigned64Type = 109,     ///< std::uint64_t
};
