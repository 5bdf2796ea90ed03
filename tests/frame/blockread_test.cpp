// Reading tape blocks: what each read answers, retries and skips and their limits, the account of what was lost.

#include "quarlo/tapelib/frame/blockread.h"
#include "tests/support/units_fixture.h"

namespace {

const std::string A = block(100, 1);
constexpr RetryWords kSkipping = {"again", "on", "too many"};
constexpr RetryWords kStaying = {"again", nullptr, nullptr};

class PatientReads : public UnitsTest {
 protected:
  /// The answers by their first letters, up to the end of the data or the end of the job; the last stays in `read`.
  std::string answers(PatientReader reader) {
    std::string letters;
    do {
      read = reader.read();
      letters += "BMESFL"[static_cast<int>(read.kind)];
    } while (read.kind != TapeRead::Kind::EndOfData && !read.failed());
    reader.tellOfLost();
    return letters;
  }
  TapeRead read;
};

TEST_F(PatientReads, RetriesAndSkipsHaveTheirLimitsAndWhatIsLostIsNamed) {
  const Tape eight(8, A);
  const Tape files = {A, MARK, A, MARK, A, MARK, A, MARK, MARK};
  const struct {
    std::string answers;
    Tape tape;
    std::vector<std::size_t> bad;
    long retries;
    long skips;
    std::string lost;  // as the line about it begins
    const char* fault = "";
    RetryWords words = kSkipping;
    bool abort = false;
  } rows[] = {
      // A good block between begins the row anew; the sixth of a row ends the job.
      {"BSSSBSSSE", eight, {1, 2, 3, 5, 6, 7}, 30, 6, "6 blocks could not be read: tape 1 file 1 block 2, "},
      {"BSSSSSF", eight, {1, 2, 3, 4, 5, 6}, 30, 5, "6 blocks could not be read: tape 1 file 1 block 2, "},
      {"BF", eight, {1}, 5, 0, "1 block could not be read: tape 1 file 1 block 2.", "", kStaying},
      {"BF", eight, {1}, 0, 0, "1 block could not be read: tape 1 file 1 block 2.", "", kSkipping, true},
      {"BBBBBBBBE", eight, {}, 5, 0, "", "read:1:EIO,read:2:EIO,read:3:EIO,read:4:EIO,read:5:EIO"},
      // A mark that cannot be read is one all the same, no block is lost with it, and it is of the row.
      {"BMBMBMBMME", files, {}, 5, 1, "", "read:4:EIO,read:5:EIO,read:6:EIO,read:7:EIO,read:8:EIO,read:9:EIO"},
      {"BMSMSMF", files, {}, 30, 5, "3 blocks could not be read: tape 1 file 2 block 1, tape 1 f", "read:2+:EIO"},
      {"BL", eight, {}, 0, 0, "", "read:2:ENOMEDIUM"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.answers + " " + row.fault);
    closeUnits();
    putIn(0, "in.tap", row.tape, row.bad);
    setenv("QUARLO_TAPE_FAULT", row.fault, 1);
    setTapeDriver(nullptr);
    openInputTape(0);
    unsetenv("QUARLO_TAPE_FAULT");
    units[0].inputAbort = row.abort;
    forgetConsole();
    EXPECT_EQ(answers(PatientReader(units, row.words)), row.answers);
    expectCounts({{"again", row.retries}, {"on", row.skips}});
    EXPECT_EQ(count("too many"), row.retries == 30 && read.failed() ? 1 : 0);
    const std::string last = consoleWithoutDates().back();
    EXPECT_EQ(last.starts_with("  ** " + row.lost), !row.lost.empty()) << last;
  }
}

TEST_F(PatientReads, DrivesOfTheM4FamilyAreAskedForLessUnlessTheUserWantsAll) {
  setBuffer(96);
  putIn(0, "in.tap", {block(64000, 1), block(64001, 2)});
  openInputTape(0);
  units[0].isM4 = 1;
  EXPECT_EQ(answers(PatientReader(units, kStaying)), "BF");
  EXPECT_EQ(read.error, ENOMEM);
  EXPECT_EQ(count("      The block is longer than the limit of 64000 bytes, which holds for drives of this family."),
            1 + PatientReader::kRetries);
  EXPECT_EQ(answers(PatientReader(units, kStaying, false)), "BE");
  EXPECT_EQ(readSize(units[0]), 60000);
}

}  // namespace
