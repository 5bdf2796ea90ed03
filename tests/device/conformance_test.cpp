// What every driver must answer, operation by operation: the same scenes are played on a virtual drive and, where the
// environment names one, on a genuine drive (see bench.h).
//
// A scene is a text of lines "operation -> result | status". Operations: open (read-write), open:r, open:n
// (non-blocking) and their like, close, r:SIZE, w:SIZE, pos, hands:COMMAND, or a tape operation with an optional count.
// The status is the file and block number and the status bits. Blocks carry bytes that depend on their length; a read
// checks them.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/device/bench.h"

namespace {

const std::map<std::string, int>& operationCodes() {
  static const std::map<std::string, int> codes{
      {"rew", MTREW},       {"fsf", MTFSF},    {"bsf", MTBSF},   {"fsfm", MTFSFM}, {"bsfm", MTBSFM},
      {"fsr", MTFSR},       {"bsr", MTBSR},    {"weof", MTWEOF}, {"eom", MTEOM},   {"offl", MTOFFL},
      {"setblk", MTSETBLK}, {"seek", MTSEEK},  {"lock", MTLOCK}, {"nop", MTNOP},   {"load", MTLOAD},
      {"unlock", MTUNLOCK}, {"reten", MTRETEN}};
  return codes;
}

char patternAt(std::size_t length, std::size_t i) { return static_cast<char>(length * 131 + i * 7 + (i >> 8) * 13); }

std::string errorName(int error) {
  const std::map<int, const char*> names{{EIO, "EIO"},     {ENOMEM, "ENOMEM"}, {ENOSPC, "ENOSPC"},
                                         {EROFS, "EROFS"}, {EBADF, "EBADF"},   {EACCES, "EACCES"},
                                         {EBUSY, "EBUSY"}, {EINVAL, "EINVAL"}, {ENOMEDIUM, "ENOMEDIUM"}};
  const auto found = names.find(error);
  return found == names.end() ? std::strerror(error) : found->second;
}

class Player {
 public:
  explicit Player(Bench& bench) : bench_(bench) {}
  ~Player() {
    if (fd_ >= 0) tapeDriver().close(fd_);
  }

  std::string play(const std::string& operation) {
    const auto colon = operation.find(':');
    const std::string verb = operation.substr(0, colon);
    const std::string argument = colon == std::string::npos ? "" : operation.substr(colon + 1);
    if (verb == "hands") {
      bench_.hands(argument);
      return "";
    }
    errno = 0;
    long result = run(verb, argument);
    std::string text = result < 0 ? errorName(errno) : std::to_string(result);
    if (verb == "open" && result >= 0) text = "ok";
    if (note_ != nullptr) text += note_;
    note_ = nullptr;
    return fd_ < 0 ? text : text + " | " + statusText();
  }

 private:
  long run(const std::string& verb, const std::string& argument) {
    TapeDriver& driver = tapeDriver();
    if (verb == "open") return open(argument);
    if (verb == "close") {
      const int fd = fd_;
      fd_ = -1;
      return driver.close(fd);
    }
    const long count = argument.empty() ? 1 : std::stol(argument);
    if (verb == "r") return read(static_cast<std::size_t>(count));
    if (verb == "w") return write(static_cast<std::size_t>(count));
    long block = -1;
    if (verb == "pos") return driver.position(fd_, block) < 0 ? -1 : block;
    mtop command{};
    command.mt_op = static_cast<short>(operationCodes().at(verb));
    command.mt_count = static_cast<int>(count);
    return driver.operate(fd_, command);
  }

  long open(const std::string& how) {
    int flags = how.find('r') == std::string::npos ? O_RDWR : O_RDONLY;
    if (how.find('n') != std::string::npos) flags |= O_NONBLOCK;
    return fd_ = tapeDriver().open(bench_.device().c_str(), flags);
  }

  long read(std::size_t size) {
    buffer_.resize(size);
    const long result = tapeDriver().read(fd_, buffer_.data(), size);
    for (std::size_t i = 0; result > 0 && i < static_cast<std::size_t>(result); ++i)
      if (buffer_[i] != patternAt(static_cast<std::size_t>(result), i)) note_ = " DATA DIFFERS";
    return result;
  }

  long write(std::size_t size) {
    buffer_.resize(size);
    for (std::size_t i = 0; i < size; ++i) buffer_[i] = patternAt(size, i);
    return tapeDriver().write(fd_, buffer_.data(), size);
  }

  std::string statusText() const {
    mtget status{};
    if (tapeDriver().status(fd_, status) < 0) return "no status";
    std::string text = std::to_string(status.mt_fileno) + " " + std::to_string(status.mt_blkno);
    const long bits = status.mt_gstat;
    const auto add = [&](bool set, const char* name) {
      if (set) text += std::string(" ") + name;
    };
    add(GMT_EOF(bits) != 0, "EOF");
    add(GMT_BOT(bits) != 0, "BOT");
    add(GMT_EOT(bits) != 0, "EOT");
    add(GMT_EOD(bits) != 0, "EOD");
    add(GMT_WR_PROT(bits) != 0, "WR_PROT");
    add(GMT_ONLINE(bits) != 0, "ONLINE");
    add(GMT_DR_OPEN(bits) != 0, "DR_OPEN");
    return text;
  }

  Bench& bench_;
  int fd_ = -1;
  std::vector<char> buffer_;
  const char* note_ = nullptr;
};

class Conformance : public testing::TestWithParam<std::string> {
 protected:
  Conformance() : bench_(makeBench(GetParam())) {}

  void play(const std::string& scene) {
    Player player(*bench_);
    std::istringstream lines(scene);
    std::string line;
    while (std::getline(lines, line)) {
      if (line.empty()) continue;
      const auto arrow = line.find(" -> ");
      const std::string operation = line.substr(0, arrow);
      const std::string got = player.play(operation);
      EXPECT_EQ(got.empty() ? operation : operation + " -> " + got, line);
    }
  }
  std::unique_ptr<Bench> bench_;
};

INSTANTIATE_TEST_SUITE_P(Drives, Conformance, testing::ValuesIn(benches()), benchName);

TEST_P(Conformance, WriteReadAndEndOfData) {
  bench_->freshTape("A");
  play(R"(
open -> ok | 0 0 BOT ONLINE
rew -> 0 | 0 0 BOT ONLINE
w:32768 -> 32768 | 0 1 ONLINE
w:60000 -> 60000 | 0 2 ONLINE
w:131072 -> 131072 | 0 3 ONLINE
w:262144 -> 262144 | 0 4 ONLINE
w:3200 -> 3200 | 0 5 ONLINE
w:13 -> 13 | 0 6 ONLINE
weof -> 0 | 1 0 EOF ONLINE
w:60001 -> 60001 | 1 1 ONLINE
w:60002 -> 60002 | 1 2 ONLINE
weof -> 0 | 2 0 EOF ONLINE
weof -> 0 | 3 0 EOF ONLINE
rew -> 0 | 0 0 BOT ONLINE
close -> 0
open -> ok | 0 0 BOT ONLINE
r:524288 -> 32768 | 0 1 ONLINE
r:524288 -> 60000 | 0 2 ONLINE
r:524288 -> 131072 | 0 3 ONLINE
r:524288 -> 262144 | 0 4 ONLINE
r:524288 -> 3200 | 0 5 ONLINE
r:524288 -> 13 | 0 6 ONLINE
r:524288 -> 0 | 1 0 EOF ONLINE
r:65000 -> 60001 | 1 1 ONLINE
r:65000 -> 60002 | 1 2 ONLINE
r:65000 -> 0 | 2 0 EOF ONLINE
r:65000 -> 0 | 3 0 EOF ONLINE
r:65000 -> 0 | 3 -1 EOD ONLINE
r:65000 -> EIO | 3 -1 EOD ONLINE
r:65000 -> EIO | 3 -1 EOD ONLINE
close -> 0
open -> ok | 3 -1 EOD ONLINE
rew -> 0 | 0 0 BOT ONLINE
fsr:2 -> 0 | 0 2 ONLINE
bsr:1 -> 0 | 0 1 ONLINE
r:60000 -> 60000 | 0 2 ONLINE
fsf -> 0 | 1 0 EOF ONLINE
r:65000 -> 60001 | 1 1 ONLINE
bsf -> 0 | 0 -1 ONLINE
r:65000 -> 0 | 1 0 EOF ONLINE
bsfm -> 0 | 1 0 EOF ONLINE
r:65000 -> 60001 | 1 1 ONLINE
fsr:100 -> EIO | 2 0 EOF ONLINE
bsr:100 -> EIO | 1 -1 ONLINE
rew -> 0 | 0 0 BOT ONLINE
fsf:2 -> 0 | 2 0 EOF ONLINE
fsf -> 0 | 3 0 EOF ONLINE
fsf -> EIO | 3 -1 EOD ONLINE
eom -> 0 | 3 -1 EOD ONLINE
pos -> 11 | 3 -1 EOD ONLINE
bsf:2 -> 0 | 1 -1 ONLINE
rew -> 0 | 0 0 BOT ONLINE
bsf -> EIO | 0 0 BOT ONLINE
bsr -> EIO | 0 0 BOT ONLINE
fsfm -> 0 | 0 -1 ONLINE
pos -> 6 | 0 -1 ONLINE
seek:8 -> 0 | -1 -1 ONLINE
pos -> 8 | -1 -1 ONLINE
r:65000 -> 60002 | -1 -1 ONLINE
seek:100 -> EIO | -1 -1 ONLINE
seek:0 -> 0 | 0 0 BOT ONLINE
r:1000 -> ENOMEM | 0 1 ONLINE
r:60000 -> 60000 | 0 2 ONLINE
eom -> 0 | 3 -1 EOD ONLINE
w:500 -> 500 | 3 -1 ONLINE
weof -> 0 | 4 0 EOF ONLINE
nop -> 0 | 4 0 EOF ONLINE
lock -> 0 | 4 0 EOF ONLINE
unlock -> 0 | 4 0 EOF ONLINE
load -> 0 | 4 0 EOF ONLINE
reten -> 0 | 0 0 BOT ONLINE
)");
}

TEST_P(Conformance, FilemarksThatTheDriverAdds) {
  bench_->freshTape("A");
  play(R"(
open -> ok | 0 0 BOT ONLINE
rew -> 0 | 0 0 BOT ONLINE
w:1000 -> 1000 | 0 1 ONLINE
close -> 0
open -> ok | 1 0 EOF ONLINE
r:65536 -> 0 | 1 -1 EOD ONLINE
r:65536 -> EIO | 1 -1 EOD ONLINE
rew -> 0 | 0 0 BOT ONLINE
w:1000 -> 1000 | 0 1 ONLINE
w:1001 -> 1001 | 0 2 ONLINE
rew -> 0 | 0 0 BOT ONLINE
r:65536 -> 1000 | 0 1 ONLINE
r:65536 -> 1001 | 0 2 ONLINE
r:65536 -> 0 | 1 0 EOF ONLINE
r:65536 -> 0 | 1 -1 EOD ONLINE
rew -> 0 | 0 0 BOT ONLINE
w:1000 -> 1000 | 0 1 ONLINE
w:1001 -> 1001 | 0 2 ONLINE
bsf -> EIO | 0 0 BOT ONLINE
r:65536 -> 1000 | 0 1 ONLINE
r:65536 -> 1001 | 0 2 ONLINE
r:65536 -> 0 | 1 0 EOF ONLINE
)");
}

TEST_P(Conformance, NoFilemarkAfterOtherMoves) {
  bench_->freshTape("A");
  for (const char* move : {"bsr -> 0 | 0 1 ONLINE", "fsr -> EIO | 0 2 EOD ONLINE", "r:65536 -> EIO | 0 -1 ONLINE",
                           "eom -> 0 | 0 -1 EOD ONLINE", "unlock -> 0 | 0 2 ONLINE"}) {
    SCOPED_TRACE(move);
    play(R"(
open -> ok | 0 0 BOT ONLINE
rew -> 0 | 0 0 BOT ONLINE
w:1000 -> 1000 | 0 1 ONLINE
w:1001 -> 1001 | 0 2 ONLINE
)" + std::string(move) +
         "\nclose -> 0\n");
    play(R"(
hands:eject
hands:insert A
open -> ok | 0 0 BOT ONLINE
r:65536 -> 1000 | 0 1 ONLINE
r:65536 -> 1001 | 0 2 ONLINE
r:65536 -> EIO | 0 -1 ONLINE
fsr -> EIO | 0 -1 EOD ONLINE
pos -> 2 | 0 -1 EOD ONLINE
rew -> 0 | 0 0 BOT ONLINE
)");
    if (!bench_->hasHands()) return;
  }
}

TEST_P(Conformance, WritingEndsTheRecording) {
  bench_->freshTape("A");
  play(R"(
open -> ok | 0 0 BOT ONLINE
rew -> 0 | 0 0 BOT ONLINE
w:1000 -> 1000 | 0 1 ONLINE
w:1001 -> 1001 | 0 2 ONLINE
w:1002 -> 1002 | 0 3 ONLINE
weof -> 0 | 1 0 EOF ONLINE
w:1003 -> 1003 | 1 1 ONLINE
weof -> 0 | 2 0 EOF ONLINE
rew -> 0 | 0 0 BOT ONLINE
fsr -> 0 | 0 1 ONLINE
w:501 -> 501 | 0 2 ONLINE
rew -> 0 | 0 0 BOT ONLINE
r:65536 -> 1000 | 0 1 ONLINE
r:65536 -> 501 | 0 2 ONLINE
r:65536 -> 0 | 1 0 EOF ONLINE
r:65536 -> 0 | 1 -1 EOD ONLINE
r:65536 -> EIO | 1 -1 EOD ONLINE
)");
}

TEST_P(Conformance, EndOfMedium) {
  NEEDS_HANDS();
  bench_->freshTape("SMALL", 1);
  std::string scene = "open -> ok | 0 0 BOT ONLINE\n";
  for (int i = 1; i <= 10; ++i) scene += "w:100000 -> 100000 | 0 " + std::to_string(i) + " ONLINE\n";
  play(scene + R"(
w:100000 -> 100000 | 0 11 EOT ONLINE
w:100000 -> ENOSPC | 0 11 EOD ONLINE
w:100000 -> 100000 | 0 12 EOT ONLINE
w:100000 -> ENOSPC | 0 12 EOD ONLINE
w:100000 -> 100000 | 0 13 EOT ONLINE
w:100000 -> ENOSPC | 0 13 EOD ONLINE
w:100000 -> ENOSPC | 0 13 EOT ONLINE
w:100000 -> ENOSPC | 0 13 EOD ONLINE
weof -> 0 | 1 0 EOF ONLINE
weof -> 0 | 2 0 EOF ONLINE
rew -> 0 | 0 0 BOT ONLINE
fsr:13 -> 0 | 0 13 ONLINE
r:200000 -> 0 | 1 0 EOF ONLINE
r:200000 -> 0 | 2 0 EOF ONLINE
r:200000 -> 0 | 2 -1 EOD ONLINE
r:200000 -> EIO | 2 -1 EOD ONLINE
)");
}

TEST_P(Conformance, OfflineAndEmpty) {
  NEEDS_HANDS();
  bench_->freshTape("A");
  play(R"(
open -> ok | 0 0 BOT ONLINE
w:1000 -> 1000 | 0 1 ONLINE
weof -> 0 | 1 0 EOF ONLINE
fsf -> EIO | 1 -1 EOD ONLINE
offl -> 0 | 1 -1 EOD DR_OPEN
r:1000 -> ENOMEDIUM | 1 -1 EOD DR_OPEN
w:1000 -> ENOMEDIUM | 1 -1 EOD DR_OPEN
rew -> ENOMEDIUM | 1 -1 EOD DR_OPEN
close -> 0
open:rn -> ok | -1 -1 EOD DR_OPEN
hands:insert A
r:1000 -> ENOMEDIUM | -1 -1 EOD DR_OPEN
close -> 0
open:rn -> ok | 0 0 BOT ONLINE
r:65536 -> 1000 | 0 1 ONLINE
)");
}

TEST_P(Conformance, CartridgePulled) {
  NEEDS_HANDS();
  bench_->freshTape("A");
  play(R"(
open -> ok | 0 0 BOT ONLINE
w:2000 -> 2000 | 0 1 ONLINE
weof:2 -> 0 | 2 0 EOF ONLINE
rew -> 0 | 0 0 BOT ONLINE
r:65536 -> 2000 | 0 1 ONLINE
hands:eject
r:65536 -> EIO | 0 -1 ONLINE
pos -> EIO | 0 -1 ONLINE
w:1000 -> EIO | 0 -1 ONLINE
fsr -> EIO | 0 -1 ONLINE
setblk:0 -> 0 | 0 -1 ONLINE
rew -> EIO | 0 -1 ONLINE
offl -> 0 | 0 -1 DR_OPEN
close -> 0
open:rn -> ok | -1 -1 DR_OPEN
close -> 0
hands:insert A
open -> ok | 0 0 BOT ONLINE
w:1000 -> 1000 | 0 1 ONLINE
hands:eject
close -> EIO
)");
}

TEST_P(Conformance, CartridgeExchanged) {
  NEEDS_HANDS();
  bench_->freshTape("OTHER");
  play(R"(
open -> ok | 0 0 BOT ONLINE
w:777 -> 777 | 0 1 ONLINE
w:778 -> 778 | 0 2 ONLINE
weof -> 0 | 1 0 EOF ONLINE
)");
  bench_->freshTape("A");
  play(R"(
open -> ok | 0 0 BOT ONLINE
w:2000 -> 2000 | 0 1 ONLINE
w:2001 -> 2001 | 0 2 ONLINE
weof -> 0 | 1 0 EOF ONLINE
rew -> 0 | 0 0 BOT ONLINE
r:65536 -> 2000 | 0 1 ONLINE
hands:eject
hands:insert OTHER
r:65536 -> EIO | 0 -1 ONLINE
pos -> 0 | 0 0 BOT ONLINE
fsr -> 0 | 0 1 ONLINE
rew -> 0 | 0 0 BOT ONLINE
r:65536 -> 777 | 0 1 ONLINE
hands:eject
hands:insert A
rew -> EIO | 0 1 ONLINE
rew -> 0 | 0 0 BOT ONLINE
r:65536 -> 2000 | 0 1 ONLINE
hands:eject
hands:insert OTHER
fsr -> EIO | 0 2 ONLINE
r:65536 -> 777 | 0 3 ONLINE
hands:eject
hands:insert A
pos -> EIO | 0 3 ONLINE
rew -> 0 | 0 0 BOT ONLINE
w:3000 -> 3000 | 0 1 ONLINE
w:3001 -> 3001 | 0 2 ONLINE
hands:eject
hands:insert OTHER
weof -> EIO | 0 2 ONLINE
pos -> 0 | 0 0 BOT ONLINE
unlock -> 0 | 0 0 BOT ONLINE
close -> 0
open -> ok | 0 0 BOT ONLINE
hands:eject
hands:insert A
w:3002 -> EIO | 0 -1 ONLINE
hands:eject
hands:insert OTHER
)");
}

// A driver that took the last operation for a write puts its filemark at the beginning of the cartridge that was put
// in.
TEST_P(Conformance, CloseAfterAnExchangeWhileWriting) {
  NEEDS_HANDS();
  for (const bool unlocked : {false, true}) {
    bench_->freshTape("OTHER");
    play("open -> ok | 0 0 BOT ONLINE\nw:777 -> 777 | 0 1 ONLINE\nweof -> 0 | 1 0 EOF ONLINE\nclose -> 0\n");
    bench_->freshTape("A");
    play(R"(
open -> ok | 0 0 BOT ONLINE
w:2000 -> 2000 | 0 1 ONLINE
hands:eject
hands:insert OTHER
w:2001 -> EIO | 0 -1 ONLINE
pos -> 0 | 0 0 BOT ONLINE
)" + std::string(unlocked ? "unlock -> 0 | 0 0 BOT ONLINE\n" : "") +
         "close -> 0\nopen -> ok | " + (unlocked ? "0 0 BOT ONLINE" : "1 0 EOF ONLINE") +
         "\nrew -> 0 | 0 0 BOT ONLINE\nr:1000 -> " + (unlocked ? "777 | 0 1 ONLINE" : "0 | 1 0 EOF ONLINE"));
  }
}

TEST_P(Conformance, Reset) {
  NEEDS_HANDS();
  bench_->freshTape("A");
  play(R"(
open -> ok | 0 0 BOT ONLINE
w:2000 -> 2000 | 0 1 ONLINE
w:2001 -> 2001 | 0 2 ONLINE
hands:reset
w:2002 -> EIO | -1 -1 ONLINE
pos -> EIO | -1 -1 ONLINE
weof -> EIO | -1 -1 ONLINE
fsr -> EIO | -1 -1 ONLINE
close -> EIO
open -> ok | -1 -1 ONLINE
r:65536 -> EIO | -1 -1 ONLINE
rew -> 0 | 0 0 BOT ONLINE
r:65536 -> 2000 | 0 1 ONLINE
hands:reset
r:65536 -> EIO | -1 -1 ONLINE
eom -> 0 | -1 -1 EOD ONLINE
pos -> 2 | -1 -1 EOD ONLINE
rew -> 0 | 0 0 BOT ONLINE
r:65536 -> 2000 | 0 1 ONLINE
r:65536 -> 2001 | 0 2 ONLINE
r:65536 -> EIO | 0 -1 ONLINE
)");
}

TEST_P(Conformance, WriteProtected) {
  NEEDS_HANDS();
  bench_->freshTape("A");
  play(R"(
open -> ok | 0 0 BOT ONLINE
w:2000 -> 2000 | 0 1 ONLINE
close -> 0
hands:protect 1
hands:eject
hands:insert A
open -> EROFS
open:r -> ok | 0 0 BOT WR_PROT ONLINE
w:1000 -> EBADF | 0 0 BOT WR_PROT ONLINE
weof -> EACCES | 0 0 BOT WR_PROT ONLINE
r:65536 -> 2000 | 0 1 WR_PROT ONLINE
close -> 0
open:n -> ok | 0 1 WR_PROT ONLINE
w:1000 -> EACCES | 0 1 WR_PROT ONLINE
weof -> EACCES | 0 1 WR_PROT ONLINE
close -> 0
hands:protect 0
hands:eject
hands:insert A
open:r -> ok | 0 0 BOT ONLINE
weof -> EACCES | 0 0 BOT ONLINE
)");
}

TEST_P(Conformance, BadBlock) {
  NEEDS_HANDS();
  bench_->freshTape("A");
  play(R"(
open -> ok | 0 0 BOT ONLINE
w:1000 -> 1000 | 0 1 ONLINE
w:1001 -> 1001 | 0 2 ONLINE
w:1002 -> 1002 | 0 3 ONLINE
weof -> 0 | 1 0 EOF ONLINE
rew -> 0 | 0 0 BOT ONLINE
hands:badblock A 1
r:2000 -> 1000 | 0 1 ONLINE
r:2000 -> EIO | 0 -1 ONLINE
pos -> 2 | 0 -1 ONLINE
bsr -> 0 | 0 -1 ONLINE
pos -> 1 | 0 -1 ONLINE
r:2000 -> EIO | 0 -1 ONLINE
bsr -> 0 | 0 -1 ONLINE
fsr -> 0 | 0 -1 ONLINE
r:2000 -> 1002 | 0 -1 ONLINE
r:2000 -> 0 | 1 0 EOF ONLINE
rew -> 0 | 0 0 BOT ONLINE
fsr:3 -> 0 | 0 3 ONLINE
)");
}

TEST_P(Conformance, BlankTapeAndRecordingWithoutFilemark) {
  NEEDS_HANDS();
  bench_->freshTape("A");
  play(R"(
open -> ok | 0 0 BOT ONLINE
pos -> 0 | 0 0 BOT ONLINE
r:1000 -> EIO | 0 -1 ONLINE
pos -> 0 | 0 0 BOT ONLINE
fsr -> EIO | 0 0 BOT EOD ONLINE
r:1000 -> EIO | 0 0 BOT EOD ONLINE
bsr -> EIO | 0 0 BOT ONLINE
fsf -> EIO | 0 -1 EOD ONLINE
rew -> 0 | 0 0 BOT ONLINE
eom -> 0 | 0 -1 EOD ONLINE
rew -> 0 | 0 0 BOT ONLINE
w:1000 -> 1000 | 0 1 ONLINE
hands:eject
close -> EIO
hands:insert A
open -> ok | 0 0 BOT ONLINE
r:1000 -> 1000 | 0 1 ONLINE
r:1000 -> EIO | 0 -1 ONLINE
r:1000 -> EIO | 0 -1 ONLINE
)");
}

TEST_P(Conformance, FixedBlocksAndSecondOpener) {
  bench_->freshTape("A");
  play(R"(
open -> ok | 0 0 BOT ONLINE
rew -> 0 | 0 0 BOT ONLINE
setblk:1024 -> 0 | 0 0 BOT ONLINE
w:1024 -> 1024 | 0 1 ONLINE
w:1024 -> 1024 | 0 2 ONLINE
w:1000 -> EINVAL | 0 2 ONLINE
weof -> 0 | 1 0 EOF ONLINE
rew -> 0 | 0 0 BOT ONLINE
r:1024 -> 1024 | 0 1 ONLINE
fsr:1 -> 0 | 0 2 ONLINE
r:1024 -> 0 | 1 0 EOF ONLINE
r:1024 -> 0 | 1 -1 EOD ONLINE
setblk:0 -> 0 | 1 -1 EOD ONLINE
)");
  Player first(*bench_);
  Player second(*bench_);
  EXPECT_EQ(first.play("open").substr(0, 2), "ok");
  EXPECT_EQ(second.play("open"), "EBUSY");
  EXPECT_EQ(second.play("open:rn"), "EBUSY");
}

}  // namespace
