// Every report on a dataset, while one call after the other of the data library fails: nothing is claimed that was not
// measured, and what was lost is told.
#include "tests/support/instrument_fixture.h"

namespace {

enum Call { NO_CALL, OPENING, PROPERTY, HEADER, TRACE };

struct {
  Call call = NO_CALL;
  int at = 0;  // the how manieth of them fails
  bool fails(Call made) { return made == call && --at == 0; }
} fault;

}  // namespace

// The linker leads the reports' calls here (tests/CMakeLists.txt).
#define WRAPPED(name, symbol, ...)                      \
  int real##name(__VA_ARGS__) asm("__real_" symbol);    \
  int wrapped##name(__VA_ARGS__) asm("__wrap_" symbol); \
  int wrapped##name(__VA_ARGS__)

WRAPPED(Open, "_Z12NewInputFileP4LinkP13ProcessRecordPKcii", Link* link, ProcessRecord* process, const char* name,
        int number, int accepted) {
  if (!fault.fails(OPENING)) return realOpen(link, process, name, number, accepted);
  return link->value = kyrDiskError;
}
WRAPPED(Property, "_Z18GetDatasetPropertyPK13ProcessRecord4LinkiiiPv", const ProcessRecord* process, Link link,
        int property, int type, int units, void* value) {
  const int result = realProperty(process, link, property, type, units, value);
  return fault.fails(PROPERTY) ? kyrBadCall : result;
}
WRAPPED(Header, "_Z9HeaderGetP13ProcessRecord4LinkiiP9TraceInfo", ProcessRecord* process, Link link, int record,
        int trace, TraceInfo* header) {
  if (!fault.fails(HEADER)) return realHeader(process, link, record, trace, header);
  makeDead(0, nullptr, header, killUnreadable);
  return kyrDiskError;
}
WRAPPED(Trace, "_Z8TraceGetP13ProcessRecord4LinkiiPfP9TraceInfo", ProcessRecord* process, Link link, int record,
        int trace, float* samples, TraceInfo* header) {
  if (!fault.fails(TRACE)) return realTrace(process, link, record, trace, samples, header);
  makeDead(2, samples, header, killUnreadable);
  return kyrTraceLost;
}

namespace {

struct Report {
  const char* row;
  int resource;
  const char* title;
  bool searches;       // a record by its field file
  bool counts = true;  // every live trace of these among those that it tests
};

class FailingCalls : public InstrumentTest {
 protected:
  ~FailingCalls() override { fault = {}; }
  /// Runs with one failing call. @return whether it came to that call, and so failed
  bool runWith(Call call, int at) {
    fault.call = call;
    fault.at = at;
    forgetConsole();
    toolkit.errors.clear();
    page = run();
    return fault.at <= 0;
  }
  void expectRefusal() {
    EXPECT_EQ(toolkit.errors, Lines{"Error opening file " + folder.path("in.kyr") + " for reading."});
    EXPECT_EQ(page, Lines{});
    EXPECT_EQ(status(), "The dataset cannot be opened");
  }
  Lines page;
};

class ReportSweep : public FailingCalls, public testing::WithParamInterface<Report> {};

TEST_P(ReportSweep, ClaimsNothingThatWasNotMeasured) {
  make({{901, {{{1, -1}}, {{1, -1}}}}, {902, {{{1, -1}}, {{1, -1}}}}, {903, {{{1, -1}}, {{1, -1}}}}}, 2);
  openReport(GetParam().row, GetParam().resource);
  ASSERT_FALSE(runWith(NO_CALL, 1));
  const std::size_t whole = page.size();
  ASSERT_GT(whole, 5U);
  EXPECT_EQ(Lines(page.begin(), page.begin() + 5), head(GetParam().title));
  const std::string tested = status();
  const auto ended = [this] { return !page.empty() && page.back().starts_with("--  End of"); };
  EXPECT_TRUE(ended());
  int traces = 0;
  for (const Call call : {OPENING, PROPERTY, HEADER, TRACE})
    for (int at = 1; runWith(call, at); ++at) {
      SCOPED_TRACE(testing::Message() << call << " " << at);
      EXPECT_EQ(toolkit.enabled(test, IT_SAVE), ended());
      if (call == OPENING || call == PROPERTY) expectRefusal();
      EXPECT_TRUE(call != HEADER || ended() || status().ends_with(" not found. Records that cannot be read: 1"))
          << status();
      if (call != TRACE) continue;
      ++traces;
      EXPECT_TRUE(ended());
      EXPECT_EQ(std::ranges::count_if(consoleWithoutDates(),
                                      [](const auto& line) {
                                        return line.starts_with(
                                            "  ** Traces lost or damaged: 1, never written: 0. The first is trace ");
                                      }),
                1);
      EXPECT_EQ(status() != tested, GetParam().searches && GetParam().counts);
      EXPECT_EQ(page.size() < whole, GetParam().searches);
    }
  EXPECT_GE(traces, 2);
}

TEST_F(FailingCalls, TheKillsReportListsWhatItCannotRead) {
  make({{901, {{{1, -1}}, {{1, -1}}}}, {902, {{{1, -1}}, {{1, -1}}}}}, 2);
  openReport("Trace Kills Report", DLG_KILLS_REPORT);
  ASSERT_FALSE(runWith(NO_CALL, 1));
  const Lines none = page;
  for (const Call call : {OPENING, PROPERTY, HEADER})
    for (int at = 1; runWith(call, at); ++at) {
      SCOPED_TRACE(testing::Message() << call << " " << at);
      if (call != HEADER) {
        expectRefusal();
        continue;
      }
      // A record's first header is read for its heading too.
      EXPECT_EQ(page == none, at % 3 == 1);
      EXPECT_EQ(status() == "1 dead trace listed", at % 3 != 1);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Reports, ReportSweep,
    testing::Values(
        Report{"A/D Converter Test", DLG_AD_TEST, "A / D   A C C U R A C Y   T E S T", false},
        Report{"Crossfeed Test", DLG_CROSSFEED_TEST, "C R O S S F E E D   I S O L A T I O N   T E S T", true},
        Report{"THD Test", DLG_DISTORTION_TEST, "H A R M O N I C   D I S T O R T I O N   T E S T", true, false},
        Report{"EIN Test", DLG_NOISE_TEST, "E Q U I V A L E N T   I N P U T   N O I S E   T E S T", true},
        Report{"DC Offset Test", DLG_DC_OFFSET_TEST, "D C   B I A S   T E S T", true},
        Report{"Dynamic Range Test", DLG_DYNAMIC_RANGE_TEST,
               "D Y N A M I C   R A N G E   D E T E R M I N A T I O N   T E S T", true},
        Report{"Impulse Resp. Test", DLG_IMPULSE_TEST, "I M P U L S E   R E S P O N S E   T E S T", true},
        Report{"Gain Accuracy Test", DLG_GAIN_ACCURACY_TEST, "G A I N   A C C U R A C Y   T E S T", true},
        Report{"Gain Step Test", DLG_GAIN_STEP_TEST, "G A I N   S T E P   T E S T", true}),
    [](const auto& one) { return "Dialog" + std::to_string(one.param.resource); });

}  // namespace
