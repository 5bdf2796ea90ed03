#include "quarlo/tapelib/driver/fault_driver.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <string_view>
#include <thread>
#include <utility>

namespace {

template <class Value>
struct Named {
  std::string_view name;
  Value value;
};

constexpr Named<TapeFault::Kind> kKinds[] = {
    {"any", TapeFault::ANY},        {"open", TapeFault::OPEN},     {"close", TapeFault::CLOSE},
    {"read", TapeFault::READ},      {"write", TapeFault::WRITE},   {"weof", TapeFault::MARKS},
    {"space", TapeFault::SPACE},    {"rewind", TapeFault::REWIND}, {"offline", TapeFault::OFFLINE},
    {"setblk", TapeFault::SETBLK},  {"status", TapeFault::STATUS}, {"position", TapeFault::POSITION},
    {"address", TapeFault::ADDRESS}};

constexpr Named<int> kErrors[] = {{"EIO", EIO},       {"ENOSPC", ENOSPC},       {"ENOMEM", ENOMEM}, {"EBUSY", EBUSY},
                                  {"EACCES", EACCES}, {"ENOMEDIUM", ENOMEDIUM}, {"EROFS", EROFS},   {"ENODEV", ENODEV},
                                  {"ENXIO", ENXIO},   {"EINVAL", EINVAL},       {"EINTR", EINTR}};

template <class Table, class Value>
bool lookUp(const Table& table, std::string_view name, Value& value) {
  for (const auto& row : table) {
    if (row.name != name) continue;
    value = row.value;
    return true;
  }
  return false;
}

bool number(std::string_view text, long& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() && value >= 0;
}

bool parseEffect(std::string_view text, TapeFault& fault) {
  if (text == "short" || text.starts_with("short=")) {
    fault.effect = TapeFault::SHORT;
    return text == "short" || number(text.substr(6), fault.value);
  }
  if (text.starts_with("slow=")) {
    fault.effect = TapeFault::SLOW;
    return number(text.substr(5), fault.value);
  }
  int error = 0;
  if (lookUp(kErrors, text, error)) {
    fault.value = error;
    return true;
  }
  return number(text, fault.value) && fault.value > 0;
}

bool parseFault(std::string_view text, TapeFault& fault) {
  const auto first = text.find(':');
  const auto second = first == std::string_view::npos ? first : text.find(':', first + 1);
  if (second == std::string_view::npos) return false;
  std::string_view at = text.substr(first + 1, second - first - 1);
  fault.onward = at.ends_with('+');
  if (fault.onward) at.remove_suffix(1);
  return lookUp(kKinds, text.substr(0, first), fault.kind) && number(at, fault.at) && fault.at > 0 &&
         parseEffect(text.substr(second + 1), fault);
}

TapeFault::Kind kindOf(const mtop& command) {
  switch (command.mt_op) {
    case MTWEOF:
      return TapeFault::MARKS;
    case MTFSF:
    case MTBSF:
    case MTFSR:
    case MTBSR:
    case MTEOM:
      return TapeFault::SPACE;
    case MTREW:
      return TapeFault::REWIND;
    case MTOFFL:
      return TapeFault::OFFLINE;
    case MTSETBLK:
      return TapeFault::SETBLK;
    default:
      return TapeFault::OTHER;
  }
}

/// Bytes that a shortened transfer of `size` moves.
std::size_t shortened(const TapeFault& fault, std::size_t size) {
  return fault.value == 0 ? size / 2 : std::min(size, static_cast<std::size_t>(fault.value));
}

}  // namespace

bool parseTapeFaults(const std::string& text, std::vector<TapeFault>& faults, std::string& bad) {
  std::size_t begin = 0;
  while ((begin = text.find_first_not_of(", ", begin)) != std::string::npos) {
    const std::size_t end = std::min(text.find_first_of(", ", begin), text.size());
    TapeFault fault;
    if (!parseFault(std::string_view(text).substr(begin, end - begin), fault)) {
      bad = text.substr(begin, end - begin);
      return false;
    }
    faults.push_back(fault);
    begin = end;
  }
  return true;
}

FaultDriver::FaultDriver(std::unique_ptr<TapeDriver> inner, std::vector<TapeFault> faults)
    : inner_(std::move(inner)), faults_(std::move(faults)) {}

void FaultDriver::plan(std::vector<TapeFault> faults) {
  faults_ = std::move(faults);
  std::fill(std::begin(counts_), std::end(counts_), 0L);
  struck_ = 0;
}

const TapeFault* FaultDriver::meet(TapeFault::Kind kind) {
  ++counts_[TapeFault::ANY];
  ++counts_[kind];
  const TapeFault* met = nullptr;
  for (const TapeFault& fault : faults_) {
    if (fault.kind != kind && fault.kind != TapeFault::ANY) continue;
    const long count = counts_[fault.kind];
    if (count != fault.at && !(fault.onward && count > fault.at)) continue;
    ++struck_;
    if (fault.effect != TapeFault::SLOW)
      met = &fault;
    else
      std::this_thread::sleep_for(std::chrono::milliseconds(fault.value));
  }
  if (met != nullptr && met->effect == TapeFault::FAIL) errno = static_cast<int>(met->value);
  return met;
}

int FaultDriver::open(const char* device, int flags) {
  const TapeFault* fault = meet(TapeFault::OPEN);
  return fault != nullptr && fault->effect == TapeFault::FAIL ? -1 : inner_->open(device, flags);
}

int FaultDriver::close(int fd) {
  const TapeFault* fault = meet(TapeFault::CLOSE);
  const int result = inner_->close(fd);
  if (fault == nullptr || fault->effect != TapeFault::FAIL) return result;
  errno = static_cast<int>(fault->value);
  return -1;
}

ssize_t FaultDriver::read(int fd, void* buffer, std::size_t size) {
  const TapeFault* fault = meet(TapeFault::READ);
  if (fault == nullptr) return inner_->read(fd, buffer, size);
  if (fault->effect == TapeFault::FAIL) return -1;
  const ssize_t count = inner_->read(fd, buffer, size);
  return count <= 0 ? count : static_cast<ssize_t>(shortened(*fault, static_cast<std::size_t>(count)));
}

ssize_t FaultDriver::write(int fd, const void* buffer, std::size_t size) {
  const TapeFault* fault = meet(TapeFault::WRITE);
  if (fault == nullptr) return inner_->write(fd, buffer, size);
  return fault->effect == TapeFault::FAIL ? -1 : inner_->write(fd, buffer, shortened(*fault, size));
}

int FaultDriver::operate(int fd, const mtop& command) {
  const TapeFault* fault = meet(kindOf(command));
  return fault != nullptr && fault->effect == TapeFault::FAIL ? -1 : inner_->operate(fd, command);
}

int FaultDriver::status(int fd, mtget& status) {
  const TapeFault* fault = meet(TapeFault::STATUS);
  return fault != nullptr && fault->effect == TapeFault::FAIL ? -1 : inner_->status(fd, status);
}

int FaultDriver::position(int fd, long& block) {
  const TapeFault* fault = meet(TapeFault::POSITION);
  return fault != nullptr && fault->effect == TapeFault::FAIL ? -1 : inner_->position(fd, block);
}

int FaultDriver::address(int fd, unsigned int& word) {
  const TapeFault* fault = meet(TapeFault::ADDRESS);
  return fault != nullptr && fault->effect == TapeFault::FAIL ? -1 : inner_->address(fd, word);
}
