/// The binary reel header of SEG Y (revisions 0 to 2.0, Society of Exploration Geophysicists): where its fields stand,
/// and what its sample format codes mean. Positions count from 1; all fields are big-endian.
#pragma once

#include "quarlo/tapelib/formats/tracekey.h"

constexpr int kEbcdicHeaderBytes = 3200;
constexpr int kBinaryHeaderBytes = 400;

constexpr HeaderKey kBinarySampleInterval = {17, DT_INT16};  ///< microseconds
constexpr HeaderKey kBinarySampleCount = {21, DT_INT16};
constexpr HeaderKey kBinaryFormatCode = {25, DT_INT16};
constexpr HeaderKey kBinaryByteOrder = {97, DT_INT32};  ///< 16909060 (0x01020304) where it is filled
constexpr HeaderKey kBinaryRevision = {301, DT_INT16};  ///< major number in the first byte
constexpr HeaderKey kBinaryExtended = {305, DT_INT16};  ///< extended text headers; -1: ended by a stanza

/// Whether this is a sample format code of any revision.
bool isSegyFormat(int code);
/// Bytes of a sample of such a format; 0 for another code.
int segySampleBytes(int code);
