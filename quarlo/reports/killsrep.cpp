#include "quarlo/reports/killsrep.h"

#include <array>
#include <string>
#include <vector>

#include "libkyr/text.h"
#include "quarlo/common/dump_win.h"
#include "quarlo/common/reportdialog.h"
#include "quarlo/common/reportinput.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/dialogs/settings.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "resources/ids.h"

namespace {

constexpr long kRefreshMilliseconds = 50;

struct Settings {
  bool showGeomKill = true;
  bool showProcKill = true;
  bool showOthrKill = true;
};
Settings settings;
constexpr FlagControl<Settings> kFlags[] = {{KR_GEOMETRY, &Settings::showGeomKill},
                                            {KR_PROCESSING, &Settings::showProcKill},
                                            {KR_OTHER, &Settings::showOthrKill}};

const ReportRecord* handedOver = nullptr;
std::string outcome;  // of the last run, for the status line

/// The kinds of kills, in the report's order.
struct Kind {
  const char* name;
  bool Settings::*shown;
};
constexpr Kind kKinds[] = {{"Geometry Kills", &Settings::showGeomKill},
                           {"Processing Kills", &Settings::showProcKill},
                           {"Other Kills", &Settings::showOthrKill}};

/// Row of kKinds. A trace that was killed in several ways belongs to the first of them.
std::size_t kindOf(const TraceInfo& header) {
  const int flag = wholeProperty(trKillFlag, header);
  return (flag & killGeometry) != 0 ? 0 : (flag & killProcessing) != 0 ? 1 : 2;
}

struct DeadTrace {
  int channel;
  int recLine;
  float recLoc;
};

void line(const std::string& text) { dumpOut(text.c_str(), handedOver->textWindow); }

class KillsReport {
 public:
  explicit KillsReport(ReportInput* input) : input_(*input) {}

  void writeTitle() const {
    line("Trace Kills Report for Kyr dataset - " + input_.path());
    line(" ");
  }

  void writeRecords(JobFrame* frame, int* record, int* percent) {
    for (*record = 1; *record <= input_.records(); ++*record) {
      if (!frame->goOn()) {
        console_out("  *** Trace Kills Report aborted by user.");
        return;
      }
      writeRecord(*record);
      *percent = static_cast<int>(*record * 100.0 / input_.records());
    }
  }

  void writeNone() const {
    if (deadTraces_ > 0) return;
    for (const Kind& kind : kKinds)
      if (shown_.*kind.shown) line(formatText("No dead traces of type \"%s\" in this file.", kind.name));
  }

  long deadTraces() const { return deadTraces_; }

 private:
  void writeRecord(int record) {
    TraceInfo first;
    input_.header(record, 1, &first);
    if (!collect(record)) return;
    writeHeading(first);
    for (std::size_t kind = 0; kind < lists_.size(); ++kind)
      if (!lists_[kind].empty()) writeList(kKinds[kind].name, lists_[kind]);
  }

  /// Fills the lists with a record's dead traces of the shown kinds. @return whether there are any
  bool collect(int record) {
    for (std::vector<DeadTrace>& list : lists_) list.clear();
    const long before = deadTraces_;
    TraceInfo header;
    for (int trace = 1; trace <= input_.traces(); ++trace) {
      input_.headerCounted(record, trace, &header);
      if (IsDead(header)) add(header);
    }
    return deadTraces_ > before;
  }

  void add(const TraceInfo& header) {
    const std::size_t kind = kindOf(header);
    if (!(shown_.*kKinds[kind].shown)) return;
    lists_[kind].push_back({wholeProperty(trChannel, header), wholeProperty(trReceiverLine, header),
                            realProperty(trReceiverLocation, header)});
    ++deadTraces_;
  }

  static void writeHeading(const TraceInfo& first) {
    const int fieldFile = wholeProperty(trFieldFile, first);
    const float shotLoc = realProperty(trSourceLocation, first);
    if (shotLoc == 0) return line(formatText("Field File: %d", fieldFile));
    line(formatText("Field File: %d     Shot Line: %d     Shot Location: %.1f", fieldFile,
                    wholeProperty(trSourceLine, first), shotLoc));
  }

  static void writeList(const char* name, const std::vector<DeadTrace>& list) {
    line(formatText("   %s -", name));
    line("      Channel        Receiver Line       Receiver Location   ");
    for (const DeadTrace& trace : list)
      line(formatText("      %-15d%-20d%-20.1f", trace.channel, trace.recLine, trace.recLoc));
    line(" ");
  }

  ReportInput& input_;
  const Settings shown_ = settings;  // the dialog is alive meanwhile
  std::array<std::vector<DeadTrace>, std::size(kKinds)> lists_;
  long deadTraces_ = 0;  // listed ones, of the whole run
};

// ---- the dialog ---------------------------------------------------------------------------------------------------

void create(WINDOW dialog) {
  handedOver = static_cast<const ReportRecord*>(xvt_vobj_get_data(dialog));
  settings = {};
  showFlags(dialog, kFlags, settings);
}

void run(WINDOW dialog) {
  bool begun = false;
  runReport(dialog, [&](int*) {
    begun = true;
    outcome = "The report broke off. The console says why.";  // unless it comes to an end
    setControlText(dialog, KR_STATUS, "Running");
    return createKillsReport() == 1;
  });
  if (begun && xvt_vobj_is_valid(dialog)) setControlText(dialog, KR_STATUS, outcome.c_str());
}

constexpr ControlAction kActions[] = {{KR_RUN, run}, {KR_CLOSE, closeReport}};

void control(WINDOW dialog, const EVENT& event) {
  if (!editFlags(dialog, event, kFlags, &settings)) runAction(kActions, dialog, event);
}

}  // namespace

int createKillsReport() {
  ReportInput input(handedOver->inputFile);
  outcome = "The dataset cannot be opened";
  if (!input.isOpen()) return 0;
  KillsReport report(&input);
  report.writeTitle();
  int record = 0;
  int percent = 0;
  JobFrame frame(JOB_REPORT, UT_DISK, &record, &percent, &record, kRefreshMilliseconds);
  outcome = "The progress dialog cannot be opened";
  if (!frame.isOpen()) return 0;
  report.writeRecords(&frame, &record, &percent);
  report.writeNone();
  input.tellMissing();
  outcome = formatText("%ld dead trace%s listed", report.deadTraces(), report.deadTraces() == 1 ? "" : "s");
  return 1;
}

long KillsRep_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return reportEvents(xdWindow, *xdEvent, {.create = create, .control = control});
}
