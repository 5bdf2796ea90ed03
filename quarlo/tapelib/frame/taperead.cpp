#include "quarlo/tapelib/frame/taperead.h"

#include <cerrno>

namespace {

constexpr int kM4ReadSize = 60000;

}  // namespace

int readSize(const UnitStruct& unit, bool limited) {
  return limited && unit.isM4 != 0 ? kM4ReadSize : static_cast<int>(unit.maxBlockSize);
}

TapeRead readUnit(UnitStruct* units, int uNum, char* buffer, int bytes) {
  using Kind = TapeRead::Kind;
  const int count = tlv_tape_read(units, uNum, buffer, bytes);
  const int reason = errno;
  if (count > 0) return {Kind::Block, count};
  if (count == 0) return {units[uNum].eodMark != 0 ? Kind::EndOfData : Kind::Mark};
  return {tlv_position_lost(units, uNum) ? Kind::Lost : Kind::Failed, 0, reason};
}
