// SEG D headers over any bytes: general headers, channel set descriptors, trace headers. Each block lies in memory of
// exactly its size, so that the sanitizers see one step too far.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "quarlo/segdcopy/segdcopy_params.h"
#include "quarlo/tapelib/formats/segdhdr.h"

#ifndef QUARLO_COLD  // there it comes with its room
SgdCopyParams SgdParams = {};
#endif

namespace {

struct Input {
  const std::uint8_t* bytes;
  std::size_t size;

  /// The next bytes in a block of their own, zeroes behind the last.
  std::vector<char> take(std::size_t count) {
    const std::size_t there = count < size ? count : size;
    std::vector<char> block(bytes, bytes + there);
    block.resize(count);
    bytes += there;
    size -= there;
    return block;
  }
};

void require(bool holds) {
  if (!holds) std::abort();
}

void readTrace(SegdHeaders* headers, Input* input) {
  const std::vector<char> trace = input->take(kSegdTraceHeaderBytes);
  headers->getTraceSize(trace.data());
  headers->getExtensionSize(input->take(kSegdBlockBytes).data());
  require(headers->TraceSize == std::trunc(headers->TraceSize));
  require(traceHeaderExtensions(trace.data()) >= 0 && getChannelSet(trace.data()) >= 0);
  for (int byte = -1; byte <= kSegdTraceHeaderBytes + 1; ++byte) {
    for (int type = -1; type <= kSegdKeyTypes; ++type)
      if (keyIsInTraceHeader(byte, type)) getHeaderField(trace.data(), byte, type);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  Input input{bytes, size};
  SegdHeaders headers;
  while (input.size > 0) {
    const std::vector<char> first = input.take(kSegdBlockBytes);
    headers.getGenHeader(first.data());
    require(headers.GenHdr.genHeaders >= 1 && headers.GenHdr.genHeaders <= 16 && headers.GenHdr.recLen >= 0);
    if (headers.GenHdr.genHeaders > 1) headers.getOptGenHeaders(input.take(kSegdBlockBytes).data());
    headers.getGenHdrSamples();
    headers.getRecordSize();
    require(headers.GenHdrSamples >= 0 && headers.TraceSize >= 0);
    if (badGeneralHeaderByte(first.data()) == 0)
      require(headers.TotalChannelSets() <= 99 * 99 && headers.scanHeaderBytes() <= 198 * 99 * kSegdBlockBytes);
    headers.getScanHeaders(input.take(static_cast<std::size_t>(headers.scanHeaderBytes())));
    require(headers.NumberOfChannels() >= 0);
    readTrace(&headers, &input);
  }
  return 0;
}
