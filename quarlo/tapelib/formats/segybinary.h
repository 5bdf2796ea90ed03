/// The binary reel header of SEG Y (revisions 0 to 2.0, Society of Exploration Geophysicists): where its fields stand,
/// and what its sample format codes mean. Positions count from 1; all fields are big-endian unless the file as a whole
/// is not.
#pragma once

#include "libkyr/segysamples.h"
#include "quarlo/tapelib/formats/tracekey.h"

constexpr int kEbcdicHeaderBytes = 3200;
constexpr int kBinaryHeaderBytes = 400;

constexpr HeaderKey kBinarySampleInterval = {17, DT_INT16};  ///< microseconds
constexpr HeaderKey kBinarySampleCount = {21, DT_INT16};
constexpr HeaderKey kBinaryFormatCode = {25, DT_INT16};
constexpr HeaderKey kBinaryByteOrder = {97, DT_INT32};     ///< 16909060 (0x01020304) where it is filled
constexpr HeaderKey kBinaryRevision = {301, DT_INT16};     ///< major number in the first byte, minor in the second
constexpr HeaderKey kBinaryFixedLength = {303, DT_INT16};  ///< not 0: all traces are of one length
constexpr HeaderKey kBinaryExtended = {305, DT_INT16};     ///< extended text headers; -1: ended by a stanza
// From revision 2 on.
constexpr HeaderKey kBinaryAdditional = {307, DT_INT32};   ///< additional trace headers; 16 bits from revision 2.1 on
constexpr int kBinaryTraceCount = 313;                     ///< traces of the file, 64 bits; 0: not told
constexpr int kBinaryFirstTrace = 321;                     ///< bytes before the first trace, 64 bits; 0: not told
constexpr HeaderKey kBinaryTrailers = {329, DT_INT32};     ///< blocks of text behind the traces; -1: ended by a stanza
constexpr HeaderKey kTraceHeaderBlocks = {397, DT_INT16};  ///< additional headers of this trace; 0: as the file says
