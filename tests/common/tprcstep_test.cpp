// Format modules in the program: found, loaded, asked, run; what is broken is reported and passed over.
#include "quarlo/common/tprcstep.h"
#include "quarlo/tapelib/console.h"

#include <elf.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "libkyr/datasets.h"
#include "libkyr/nullcheck.h"
#include "libkyr/sharedobject.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/dialogs/prog_dlg.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/drives.h"
#include "quarlo/tapelib/frame/formatblocks.h"
#include "quarlo/tapelib/frame/modulestamp.h"
#include "quarlo/tapelib/frame/traceoutput.h"
#include "quarlo/tapelib/jobstate.h"
#include "quarlo/tapelib/modulecalls.h"
#include "quarlo/tapelib/unix_fcn.h"
#include "tests/support/job_fixture.h"
#include "tests/support/segy_headers.h"

namespace {

/// Lets the buckets of an object's GNU hash table lead far out. @return false without such a table
bool damageHashTable(std::string* object) {
  Elf64_Ehdr head{};
  std::memcpy(&head, object->data(), sizeof head);
  for (std::size_t i = 0; i < head.e_shnum; ++i) {
    Elf64_Shdr section{};
    std::memcpy(&section, object->data() + head.e_shoff + i * sizeof section, sizeof section);
    if (section.sh_type != SHT_GNU_HASH) continue;
    std::uint32_t counts[3] = {};  // buckets, first symbol, words of the filter behind the four numbers
    std::memcpy(counts, object->data() + section.sh_offset, sizeof counts);
    object->replace(section.sh_offset + 16 + 8 * counts[2], 4 * counts[0], 4 * counts[0], '\x7F');
    return true;
  }
  return false;
}

struct Freer {
  void operator()(void* memory) const { std::free(memory); }
};

class ModuleTest : public JobTest {
 protected:
  ModuleTest() {
    setenv("KYRHOME", std::filesystem::current_path().c_str(), 1);
    std::filesystem::create_directory("lib");
  }
  ~ModuleTest() override { unsetenv("KYRHOME"); }

  void install(const std::string& module, const std::string& as = "") {
    std::filesystem::copy(QUARLO_TEST_MODULES + module, "lib/" + (as.empty() ? module : as));
  }
  /// The rows that findDlls gives, as "FILE: NAME ID"; the row of zeros behind them is checked.
  Lines found() {
    forgetConsole();
    DllList* list = reinterpret_cast<DllList*>(this);
    const int count = findDlls(&list);
    const std::unique_ptr<DllList[], Freer> owned(list);
    EXPECT_EQ(list == nullptr, count == 0);
    Lines rows;
    for (int row = 0; row < count; ++row)
      rows.push_back(std::string(list[row].name) + ": " + list[row].menuName + " " +
                     std::to_string(list[row].uniqueId));
    if (list != nullptr) {
      const DllList zeros{};
      EXPECT_EQ(std::memcmp(&list[count], &zeros, sizeof zeros), 0);
    }
    return rows;
  }
  void chooseDiskUnits(const std::string& input, const std::string& output) {
    const std::string names[] = {input, output};
    for (int unit = 0; unit < 2; ++unit) {
      ASSERT_TRUE(xvt_fsys_get_dir(&units[unit].fs.dir));
      std::snprintf(units[unit].fs.name, sizeof units[unit].fs.name, "%s", names[unit].c_str());
      units[unit].type = UT_DISK;
    }
  }
  /// The tape in.tap as input, a new one as output.
  void openTapes(const std::string& ofOutput = "") {
    makeCartridge("out.tap", {});
    load(0, "in.tap");
    load(1, "out.tap", ofOutput);
    getDriveList(units);
    units[0].theListItem = 0;
    units[1].theListItem = 1;
    tlv_tape_open(units, 0);
    tlv_tape_open(units, 1);
    units[0].nOutputs = 1;
  }

  /// What a caller's pointer may hold before.
  int* itsNoBlock() { return &before; }

  ProcessRecord record{};

 private:
  int before = 0;
};

TEST_F(ModuleTest, FindsModulesByNameAndOrder) {
  EXPECT_EQ(found(), Lines{});
  install("ioplain.so", "iob.so");
  install("iogood.so", "ioa.so");
  install("ioplain.so", "xio.so");
  install("ioplain.so", "io.txt");
  std::filesystem::create_directory("lib/iodir.so");
  EXPECT_EQ(found(), (Lines{"ioa.so: Good 77", "iob.so: Faulty 78"}));
  EXPECT_EQ(consoleWithoutDates(), (Lines{"Error opening shared object : iodir.so ", "  ** no regular file"}));
}

TEST_F(ModuleTest, LooksInTheHomeDirectoryAndStaysThere) {
  install("iogood.so");
  const std::string home = std::filesystem::current_path();
  std::filesystem::create_directory("elsewhere");
  std::filesystem::current_path("elsewhere");
  EXPECT_EQ(found().size(), 1U);
  EXPECT_EQ(std::filesystem::current_path(), home);
  // A home without "lib": the files of the home itself are no modules.
  std::filesystem::copy("lib/iogood.so", "elsewhere/iogood.so");
  setenv("KYRHOME", (home + "/elsewhere").c_str(), 1);
  EXPECT_EQ(found(), Lines{});
  EXPECT_EQ(std::filesystem::current_path(), home + "/elsewhere");
}

TEST_F(ModuleTest, ReportsBrokenModulesAndPassesOver) {
  for (const char* module : {"iocrash.so", "iogood.so", "iomissing.so", "ionameless.so"}) install(module);
  writeFile("lib/iotext.so", "not a module");
  EXPECT_EQ(found(), Lines{"iogood.so: Good 77"});
  const Lines console = consoleWithoutDates();
  ASSERT_EQ(console.size(), 7U);
  EXPECT_EQ(console[0], "Error opening shared object : iocrash.so ");
  EXPECT_EQ(console[1], "  ** crashes while it is loaded");
  EXPECT_EQ(console[2], "Error opening shared object : iomissing.so ");
  EXPECT_NE(console[3].find("nowhereToBeFound"), std::string::npos);
  EXPECT_EQ(console[4], "  ** Format module ionameless.so has no entry \"GetTuDllIdentifier\". It is not used.");
  EXPECT_EQ(console[5], "Error opening shared object : iotext.so ");
  EXPECT_EQ(toolkit.errors, Lines{});
}

// Whoever can write a module, or put another in its place, would run in this program.
TEST_F(ModuleTest, WhatOthersCanWriteIsNotLoaded) {
  namespace fs = std::filesystem;
  fs::create_directory("real");
  fs::copy(QUARLO_TEST_MODULES "iogood.so", "real");
  fs::create_symlink(folder.path("real/iogood.so"), "lib/iogood.so");
  EXPECT_EQ(found().size(), 1U);
  const auto refused = [&](const std::string& path, const std::string& why) {
    EXPECT_EQ(found(), Lines{}) << path;
    EXPECT_EQ(consoleWithoutDates(), (Lines{"Error opening shared object : iogood.so ", "  ** " + path + why}));
  };
  for (const std::string& path : {folder.path("lib"), folder.path("real"), folder.path("real/iogood.so")}) {
    fs::permissions(path, fs::perms::others_write, fs::perm_options::add);
    refused(path, " can be written by others: chmod o-w '" + path + "'");
    fs::permissions(path, fs::perms::others_write, fs::perm_options::remove);
  }
  if (getuid() != 0) return;
  const std::string real = folder.path("real");
  fs::permissions(real, fs::perms::group_write, fs::perm_options::add);
  EXPECT_EQ(chown(real.c_str(), 0, 54321), 0);
  refused(real, " can be written by others: chmod g-w '" + real + "'");
  EXPECT_EQ(chown(real.c_str(), 54321, 0), 0);
  refused(real, " belongs to neither you nor root nor the owner of the program");
}

TEST_F(ModuleTest, AnExceptionFromItsNameIsNoMissingEntry) {
  install("iothrows.so");
  EXPECT_EQ(found(), Lines{});
  EXPECT_EQ(consoleWithoutDates(),
            (Lines{"  *** Format module lib/iothrows.so failed in GetTuDllIdentifier: no name today",
                   "  ** Format module iothrows.so does not name itself. It is not used."}));
}

// Whole but for its table of names: it can be loaded, and whoever looks for an entry is killed.
TEST_F(ModuleTest, AModuleThatKillsWhoSearchesItIsPassedOver) {
  std::string module = readFile(QUARLO_TEST_MODULES "ioplain.so");
  ASSERT_TRUE(damageHashTable(&module));
  writeFile("lib/iodamaged.so", module);
  EXPECT_EQ(found(), Lines{});
  EXPECT_EQ(consoleWithoutDates(),
            (Lines{"Error opening shared object : iodamaged.so ", "  ** crashes while it is loaded"}));
}

// Its records would be others than the program's: the address of one would do.
TEST_F(ModuleTest, AModuleOfOtherHeadersIsPassedOver) {
  const std::string module = readFile(QUARLO_TEST_MODULES "ioplain.so");
  const std::string stamp(reinterpret_cast<const char*>(&kKyrStamp), sizeof kKyrStamp);
  std::string other = module;
  for (std::size_t at = 0; (at = other.find(stamp, at)) != std::string::npos;) other[at] = 9;
  writeFile("lib/ioother.so", other);
  writeFile("lib/iosilent.so", std::string(module).replace(module.find("kyrModuleStamp"), 1, "x"));
  EXPECT_EQ(found(), Lines{"iosilent.so: Faulty 78"});
  const Lines console = consoleWithoutDates();
  ASSERT_EQ(console.size(), 3U);
  EXPECT_EQ(console[0], "Error opening shared object : ioother.so ");
  EXPECT_TRUE(console[1].starts_with("  ** it was built for headers 9-")) << console[1];
  EXPECT_EQ(console[2], "  ** Format module iosilent.so does not tell what headers it was built with.");
}

TEST_F(ModuleTest, ALongDisplayNameIsCut) {
  install("iolongname.so");
  EXPECT_EQ(found(), Lines{"iolongname.so: " + std::string(31, 'x') + " 78"});
}

TEST_F(ModuleTest, ANameMayEndInANewline) {
  install("iogood.so");
  EXPECT_EQ(ProcessingStep("iogood.so\n").loadFailed, 0);
  EXPECT_EQ(ProcessingStep("iogood.so\n\n").loadFailed, 1);
  const ProcessingStep tooLong(std::string(400, 'x').c_str());
  EXPECT_EQ(tooLong.loadFailed, 1);
  EXPECT_EQ(tooLong.whyNot(), "its name is too long");
}

TEST_F(ModuleTest, MissingEntriesAnswerMinusOne) {
  install("ioplain.so");
  ProcessingStep step("ioplain.so");
  int block[4] = {};
  int size = 99;
  EXPECT_EQ(step.AllocInputMemory(&size), -1);
  EXPECT_EQ(size, 0);
  size = 99;
  EXPECT_EQ(step.AllocOutputMemory(&size), -1);
  EXPECT_EQ(size, 0);
  for (const int answer : {step.DestroyInputMemory(block), step.DestroyOutputMemory(block), step.PostInputDialog(block),
                           step.PostOutputDialog(block), step.GetInputDefaultParameters(block, block, block, block),
                           step.GetOutputDefaultParameters(block, block, block, block)})
    EXPECT_EQ(answer, -1);
  forgetConsole();
  for (const int answer : {step.InitialPhase(&record, block, block), step.MainPhase(&record), step.FinalPhase(&record)})
    EXPECT_EQ(answer, -1);
  EXPECT_EQ(consoleWithoutDates(), (Lines{"  *** Format module lib/ioplain.so has no entry \"TInitialPhase\".",
                                          "  *** Format module lib/ioplain.so has no entry \"TMainPhase\".",
                                          "  *** Format module lib/ioplain.so has no entry \"TFinalPhase\"."}));
}

TEST_F(ModuleTest, AParameterBlockLivesThroughAllItsCalls) {
  install("iogood.so");
  int* block = nullptr;
  allocateInput("iogood.so", &block);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(block[0], 0);
  itDoesInputParm = itInputsDisk = itInputsTape = 7;
  selectInput("iogood.so", block);
  EXPECT_EQ(block[0], 1);
  EXPECT_EQ(itDoesInputParm + 10 * itInputsDisk + 100 * itInputsTape, 111);
  EXPECT_EQ(ProcessingStep("iogood.so").PostInputDialog(block), 0);
  destroyInput("iogood.so", block);
  EXPECT_EQ(block[1], 101);
  std::free(block);

  int* output = nullptr;
  allocateOutput("iogood.so", &output);
  ASSERT_NE(output, nullptr);
  EXPECT_EQ(std::count(output, output + 25000, 0), 25000);
  itDoesOutputParm = itOutputsDisk = itOutputsTape = 7;
  selectOutput("iogood.so", output);
  EXPECT_EQ(itDoesOutputParm + 10 * itOutputsDisk + 100 * itOutputsTape, 10) << "what it does not say is 0";
  EXPECT_EQ(ProcessingStep("iogood.so").PostOutputDialog(output), 0);
  EXPECT_EQ(output[0], -5);
  destroyOutput("iogood.so", output);
  EXPECT_EQ(output[0], -6);
  std::free(output);
}

TEST_F(ModuleTest, ImpossibleBlocksAreReported) {
  install("iosize.so");
  install("ioplain.so");
  int* block = itsNoBlock();
  forgetConsole();
  allocateInput("iosize.so", &block);
  EXPECT_EQ(block, nullptr);
  block = itsNoBlock();
  allocateOutput("iosize.so", &block);
  EXPECT_EQ(block, nullptr);
  EXPECT_EQ(consoleWithoutDates(),
            (Lines{"  *** Format module iosize.so asks for a parameter block of -1 bytes.",
                   "  *** Format module iosize.so asks for a parameter block of 2000000000 bytes."}));
  EXPECT_EQ(toolkit.errors.size(), 2U);
  // A module without parameters is no failure.
  allocateInput("ioplain.so", &block);
  EXPECT_NE(block, nullptr);
  std::free(block);
}

TEST_F(ModuleTest, EveryHelperSaysThatAModuleCannotBeLoaded) {
  int* block = itsNoBlock();
  int fields[4] = {};
  forgetConsole();
  allocateInput("ionone.so", &block);
  EXPECT_EQ(block, nullptr);
  allocateOutput("ionone.so", &block);
  itInputsDisk = itOutputsTape = 1;
  selectInput("ionone.so", fields);
  selectOutput("ionone.so", fields);
  destroyInput("ionone.so", fields);
  destroyOutput("ionone.so", fields);
  EXPECT_EQ(toolkit.errors, Lines(6, "Error opening shared object : ionone.so "));
  EXPECT_EQ(count("Error opening shared object : ionone.so "), 6);
  EXPECT_EQ(count("  ** No such file or directory"), 6);
  EXPECT_EQ(itInputsDisk + itOutputsTape, 2) << "nothing else is done";
  selectInput("ionone.so", nullptr);
  destroyOutput("ionone.so", nullptr);
  EXPECT_EQ(toolkit.errors.size(), 6U);
}

TEST_F(ModuleTest, RunsThePhasesOnDiskFiles) {
  install("iogood.so");
  writeFile("in.bin", std::string(2500, 'a') + "z");
  chooseDiskUnits("in.bin", "out.bin");
  record.diskFileOutputType = 1;
  int parameters[2] = {1, 0};
  forgetConsole();
  {
    ProcessingStep step("iogood.so");
    EXPECT_EQ(step.InitialPhase(&record, parameters, nullptr), 0);
    EXPECT_EQ(record.deviceUnit, units);
    EXPECT_EQ(step.MainPhase(&record), 0);
    EXPECT_EQ(step.FinalPhase(&record), 0);
  }
  EXPECT_EQ(closeDiskUnit(&units[1]), 0);
  EXPECT_EQ(readFile("out.bin"), std::string(2500, 'b') + "{");
  EXPECT_EQ(consoleWithoutDates(), (Lines{"output type 1, tape 0, block limit " + std::to_string(units->ioBufLen) +
                                              ", from \"" + folder.path("in.bin") + "\"",
                                          "2501 bytes"}));
}

/// The module reads each first tape twice, all files of it; a second one follows; a stop ends it.
TEST_F(ModuleTest, RunsThePhasesOnTapes) {
  install("iogood.so");
  makeCartridge("in.tap", {"abc", "d", MARK, "e", MARK, MARK});
  makeCartridge("second.tap", {"x", MARK, "y"});
  openTapes();
  int parameters[2] = {2, 0};
  ProcessingStep step("iogood.so");
  ASSERT_EQ(step.InitialPhase(&record, parameters, nullptr), 0);
  nextInputIs("second.tap");
  noFurtherTape();
  std::string shown;
  toolkit.onPump = [&](long) {
    const WINDOW progress = toolkit.dialog(DLG_PROGRESS);
    if (progress != NULL_WIN) shown = toolkit.title(progress) + toolkit.text(progress, PROG_SECOND_VALUE);
    toolkit.advance(kProgressPeriod);
  };
  EXPECT_EQ(step.MainPhase(&record), 0);
  EXPECT_EQ(shown, "Reformat Progress50");
  toolkit.onPump = [&](long) { toolkit.press(toolkit.dialog(DLG_PROGRESS), PROG_STOP); };
  load(0, "in.tap");
  tlv_tape_open(units, 0);
  EXPECT_EQ(step.MainPhase(&record), 5);
  EXPECT_EQ(toolkit.dialog(DLG_PROGRESS), NULL_WIN);
  EXPECT_EQ(kyrMark(&record, 1), 0);
  EXPECT_EQ(tlv_tape_close(units, kAllOutputs), 0);
  EXPECT_EQ(tapeIn("out.tap"), (Tape{"cde", "f", MARK, "g", "z", MARK, "{", MARK}));
}

TEST_F(ModuleTest, ThePhasesFailWithAReason) {
  install("iogood.so");
  chooseDiskUnits("none.bin", "");
  int parameters[2] = {};
  ProcessingStep step("iogood.so");
  EXPECT_EQ(step.InitialPhase(&record, parameters, nullptr), 3) << "the entry's own answer";
  EXPECT_TRUE(consoleHas("  *** Error opening file " + folder.path("none.bin") + ": No such file or directory."));
  writeFile("none.bin", "x");
  EXPECT_EQ(step.InitialPhase(&record, parameters, nullptr), -1);
  EXPECT_TRUE(consoleHas("  *** Error: there is no output."));
  EXPECT_EQ(step.MainPhase(&record), 4);
  EXPECT_TRUE(consoleHas("  *** Error: the output is not open."));
}

TEST_F(ModuleTest, AFullDiskAndALongBlockAreErrors) {
  record.deviceUnit = units;
  setConsole(&record);
  chooseDiskUnits("in.bin", "");
  units[1].fs = {{"/dev"}, "", "full"};
  ASSERT_EQ(kyrOpen(&record, KYR_OUTPUT), 0);
  const std::string much(1 << 20, 'x');
  EXPECT_EQ(kyrWrite(&record, much.data(), static_cast<int>(much.size())), -1);
  EXPECT_TRUE(consoleHas("  *** Error writing the output disk file: No space left on device."));

  putIn(0, "in.tap", {"abcdef"});
  getDriveList(units);
  units[0].theListItem = 0;
  tlv_tape_open(units, 0);
  char buffer[4] = "---";
  EXPECT_EQ(kyrRead(&record, buffer, 3), -1);
  EXPECT_STREQ(buffer, "---");
  EXPECT_TRUE(consoleHas("  *** Error: a block of 6 bytes is longer than 3 bytes."));
}

TEST_F(ModuleTest, AStopOfAllJobsReachesTheModule) {
  const RunningJob around(nullptr);
  EXPECT_EQ(kyrGoOn(), 1);
  bool stopped = false;
  toolkit.onPump = [&](long) { requestStopOfJobs([&] { stopped = true; }); };
  EXPECT_EQ(kyrGoOn(), 0);
  EXPECT_FALSE(stopped) << "the wish was carried out under the job";
  toolkit.onPump = nullptr;
  EXPECT_EQ(kyrGoOn(), 0);
}

TEST_F(ModuleTest, ExceptionsStopAtTheModule) {
  install("iophases.so");
  ProcessingStep step("iophases.so");
  forgetConsole();
  EXPECT_EQ(step.InitialPhase(&record, nullptr, nullptr), -1);
  EXPECT_EQ(step.FinalPhase(&record), -1);
  EXPECT_EQ(consoleWithoutDates(),
            (Lines{"  *** Format module lib/iophases.so failed in TInitialPhase: no more of this",
                   "  *** Format module lib/iophases.so failed in TFinalPhase."}));
}

TEST_F(ModuleTest, ACompilerOfCSeesTheSameRecord) {
  void* object = loadSharedObject(QUARLO_TEST_MODULES "iogood.so", nullptr);
  const auto layout = reinterpret_cast<void (*)(std::size_t*)>(findSymbol(object, "recordLayout"));
  ASSERT_NE(layout, nullptr);
  std::size_t offsets[6] = {};
  layout(offsets);
  const std::size_t expected[6] = {offsetof(ProcessRecord, dialogWindow), offsetof(ProcessRecord, diskFileOutputType),
                                   offsetof(ProcessRecord, consoleLine),  offsetof(ProcessRecord, deviceUnit),
                                   offsetof(ProcessRecord, datasets),     sizeof(ProcessRecord)};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(offsets[i], expected[i]) << i;
  unloadSharedObject(object);
}

/// The modules that are built with the program, or by their authors (authors.sh), run as the program runs them.
class BuiltModuleTest : public ModuleTest {
 protected:
  BuiltModuleTest() {
    for (const char* name : {"ioexample.so", "iokyr.so"}) std::filesystem::copy(folderOfModules + name, "lib");
  }
  const char* const authors = std::getenv("QUARLO_AUTHORS_MODULES");
  const std::string folderOfModules = authors != nullptr ? authors : QUARLO_BUILT_MODULES;
  /// Runs the example on in.txt into out.kyr. @return the first phase's answer that is not 0
  int run(const std::string& text, int outputType = 1) {
    writeFile("in.txt", text);
    chooseDiskUnits("in.txt", "out.kyr");
    const ProcessRecordPtr owned(NewProcessRecord());
    owned->diskFileOutputType = outputType;
    forgetConsole();
    ProcessingStep step("ioexample.so");
    if (const int result = step.InitialPhase(owned.get(), parameters(), nullptr); result != 0) return result;
    if (const int result = step.MainPhase(owned.get()); result != 0) return result;
    return step.FinalPhase(owned.get());
  }
  /// The example's block, at first with its defaults.
  int* parameters() {
    if (given == nullptr) {
      int* begun = nullptr;
      allocateInput("ioexample.so", &begun);
      selectInput("ioexample.so", begun);
      given.reset(begun);
    }
    return given.get();
  }

 private:
  std::unique_ptr<int, Freer> given;
};

TEST_F(BuiltModuleTest, AreListed) {
  EXPECT_EQ(found(), (Lines{"ioexample.so: Text (one trace per line) 1001", "iokyr.so: Kyr 1"}));
  int* block = nullptr;
  allocateOutput("iokyr.so", &block);
  const std::unique_ptr<int, Freer> owned(block);
  selectOutput("iokyr.so", block);
  EXPECT_EQ(itDoesOutputParm + 10 * itOutputsDisk + 100 * itOutputsTape, 10);
  parameters();
  EXPECT_EQ(itDoesInputParm + 10 * itInputsDisk + 100 * itInputsTape, 11);
}

TEST_F(BuiltModuleTest, TheExampleMakesADataset) {
  ASSERT_EQ(run(documentExample(QUARLO_SOURCE_DIR "/docs/format-modules.md", "# interval")), 0);
  EXPECT_EQ(consoleWithoutDates(), Lines{"2 traces of 5 samples written."});
  // The interval is the parameters', which the module's own dialog has set.
  for (const auto& [typed, button] : {std::pair("4", 1), {"8", 2}}) {
    toolkit.onModal(1001, [&, typed = typed, button = button](WINDOW own) {
      toolkit.typeInto(own, 3, typed);
      toolkit.press(own, button);
    });
    ProcessingStep("ioexample.so").PostInputDialog(parameters());
  }
  ASSERT_EQ(run("1 -2.5 3e3\n\n \t4 5\t6\r\n"), 0);
  EXPECT_EQ(consoleWithoutDates(), Lines{"2 traces of 3 samples written."});

  const ProcessRecordPtr reader(NewProcessRecord());
  Link link;
  SetNumberOfInputs(reader.get(), 1);
  ASSERT_EQ(NewInputFile(&link, reader.get(), "out.kyr", 0, kAnySeismicType), 0);
  ASSERT_EQ(EndInit(reader.get()), 0);
  const struct {
    int property;
    float value;
  } counts[] = {{dsRecords, 1}, {dsTracesPerRecord, 2}, {dsSamples, 3}, {dsSampleInterval, 0.004F}};
  for (const auto& row : counts) {
    float value = 0;
    EXPECT_EQ(GetDatasetProperty(reader.get(), link, row.property, singleFloatType, gUnknownUnits, &value), 0);
    EXPECT_EQ(value, row.value) << row.property;
  }
  const std::vector<std::vector<float>> expected{{1, -2.5F, 3000}, {4, 5, 6}};
  for (int trace = 1; trace <= 2; ++trace) {
    TraceInfo header{};
    std::vector<float> samples(3);
    ASSERT_EQ(TraceGet(reader.get(), link, 1, trace, samples.data(), &header), 0);
    EXPECT_EQ(samples, expected[static_cast<std::size_t>(trace - 1)]);
    int channel = 0;
    EXPECT_EQ(GetTraceProperty(trChannel, longIntType, gUnknownUnits, &channel, &header), 0);
    EXPECT_EQ(channel, trace);
    EXPECT_FALSE(IsDead(header));
  }
}

TEST_F(BuiltModuleTest, SegyBecomesADatasetAndSegyAgain) {
  std::filesystem::copy(QUARLO_BUILT_MODULES "iosegy.so", "lib");
  const std::string descriptions = QUARLO_SOURCE_DIR "/resources/formats/";
  const auto phases = [this](const char* module, const char* from, const char* to, int type, auto* in, auto* out) {
    chooseDiskUnits(from, to);
    const ProcessRecordPtr owned(NewProcessRecord());
    owned->diskFileOutputType = type;
    ProcessingStep step(module);
    int result = step.InitialPhase(owned.get(), reinterpret_cast<int*>(in), reinterpret_cast<int*>(out));
    if (result == 0) result = step.MainPhase(owned.get());
    return result == 0 ? step.FinalPhase(owned.get()) : result;
  };
  std::string file = std::string(3200, '\x40') + header(400, {{17, 2, 2000}, {21, 2, 2}, {25, 2, 5}});
  for (const unsigned fieldFile : {7U, 9U}) {
    const std::initializer_list<HeaderField> fields = {
        {1, 4, fieldFile}, {9, 4, fieldFile},          {13, 4, 3},    {29, 2, 1},  {69, 2, 0xFF9C},
        {71, 2, 0xFF9C},   {73, 4, 12345 + fieldFile}, {109, 2, 250}, {115, 2, 2}, {117, 2, 2000}};
    file += header(240, fields) + std::string("\x3F\x80\0\0\x40\x40\0\0", 8);
  }
  writeFile("in.sgy", file);
  KyrSegyInput how;
  KyrSegyOutput wanted;
  KyrDatasetInput whole;
  KyrDatasetOutput dataset;
  selectInput("iosegy.so", reinterpret_cast<int*>(&how));
  selectOutput("iosegy.so", reinterpret_cast<int*>(&wanted));
  selectInput("iokyr.so", reinterpret_cast<int*>(&whole));
  selectOutput("iokyr.so", reinterpret_cast<int*>(&dataset));
  copyText(how.description, descriptions + "segy-rev2.txt");
  copyText(wanted.description, descriptions + "segy-rev0.txt");
  ASSERT_EQ(phases("iosegy.so", "in.sgy", "line.kyr", KYR_ID_DATASET, &how, &dataset), 0);
  ASSERT_EQ(phases("iokyr.so", "line.kyr", "out.sgy", KYR_ID_SEGY, &whole, &wanted), 0);
  EXPECT_EQ(readFile("out.sgy").substr(3600), file.substr(3600));
  toolkit.onModal(1101, [&](WINDOW own) {
    toolkit.typeInto(own, 1, "2");
    toolkit.press(own, 3);
  });
  ProcessingStep("iokyr.so").PostInputDialog(reinterpret_cast<int*>(&whole));
  ASSERT_EQ(phases("iokyr.so", "line.kyr", "last.sgy", KYR_ID_SEGY, &whole, &wanted), 0);
  EXPECT_EQ(readFile("last.sgy").substr(3600 + 240), file.substr(3600 + 248 + 240));

  forgetConsole();
  EXPECT_EQ(phases("iosegy.so", "in.sgy", "", KYR_CHECK_RUN, &how, &dataset), 0);
  EXPECT_TRUE(consoleHas("A new record where \"FieldFile\" changes: 2 records, at most 1 trace each"));
  how.fieldFiles = {.hasLimits = 1, .above = 7, .below = 9, .leftOutCount = 0, .leftOut = {}};
  EXPECT_NE(phases("iosegy.so", "in.sgy", "", KYR_CHECK_RUN, &how, &dataset), 0);
  EXPECT_TRUE(consoleHas("SKIPPING RECORD. Field file 7 is out of range."));
  how.fieldFiles = {1, 7, 10, 1, {10}};
  EXPECT_EQ(phases("iosegy.so", "in.sgy", "", KYR_CHECK_RUN, &how, &dataset), 0);
  for (const int button : {10, 11}) {  // OK; Cancel
    toolkit.onModal(1100, [&](WINDOW own) {
      toolkit.select(own, 7, button == 10 ? 6 : 0);  // every so many traces
      if (button == 10) toolkit.typeInto(own, 8, "2");
      toolkit.press(own, button);
    });
    struct {
      KyrSegyInput* block;
      int outputId;
    } handed = {&how, KYR_ID_DATASET};
    ProcessingStep("iosegy.so").PostInputDialog(reinterpret_cast<int*>(&handed));
    EXPECT_EQ(formatText("%s|%d", how.recordField, how.tracesPerRecord), "|2");
  }
  writeFile("in.sgy", file.substr(0, 100));
  EXPECT_NE(phases("iosegy.so", "in.sgy", "line.kyr", KYR_ID_DATASET, &how, &dataset), 0);
  EXPECT_TRUE(consoleHas(("  *** Error reading " + std::filesystem::current_path().string() +
                          "/in.sgy as SEG Y: the file has 100 bytes, its reel headers need 3600.")
                             .c_str()));
}

TEST_F(BuiltModuleTest, TheGuidesLoopCopiesAllFilesOfATape) {
  if (authors == nullptr) GTEST_SKIP() << "authors.sh builds it";
  std::filesystem::copy(folderOfModules + "iocopy.so", "lib");
  makeCartridge("in.tap", {"abc", "d", MARK, "e", "f", MARK, MARK});
  openTapes("capacity = 30\n");
  noFurtherTape();
  nextOutputIs("next.tap");
  SetDevUnit(&record, units);
  EXPECT_EQ(ProcessingStep("iocopy.so").MainPhase(&record), 0);
  kyrProgressEnd();
  EXPECT_EQ(tlv_tape_close(units, kAllOutputs), 0);
  EXPECT_EQ(tapeIn("out.tap"), (Tape{"abc", "d", MARK, "e", MARK, MARK}));
  EXPECT_EQ(tapeIn("next.tap"), (Tape{"f", MARK}));
}

TEST_F(BuiltModuleTest, ASourceKeepsItsModuleUntilItIsClosed) {
  install("iophases.so");
  const auto isLoaded = [](const char* module) {
    return readFile("/proc/self/maps").find(module) != std::string::npos;
  };
  writeFile("in.txt", "1 2\n# x\n3 4");
  chooseDiskUnits("in.txt", "");
  ProcessRecordPtr reader(NewProcessRecord());
  SetNumberOfInputs(reader.get(), 1);
  Link link;
  const auto openInput = [&] { return NewInputFile(&link, reader.get(), "none.kyr", 0, kAnySeismicType); };

  ASSERT_EQ(openSource("ioexample.so", reader.get(), parameters()), 0);
  ASSERT_EQ(openInput(), kyrOk);
  EXPECT_TRUE(isLoaded("ioexample.so"));
  std::vector<float> samples(2);
  TraceInfo header{};
  EXPECT_EQ(TraceGet(reader.get(), link, 1, 2, samples.data(), &header), kyrOk);
  EXPECT_EQ(samples, (std::vector<float>{3, 4}));
  EXPECT_EQ(GetTracePosition(reader.get(), link, 1, 2), 8);
  writeFile("in.txt", "");
  EXPECT_EQ(TraceGet(reader.get(), link, 1, 1, samples.data(), &header), kyrTraceLost);
  EXPECT_EQ(CloseFile(reader.get(), link), kyrOk);
  EXPECT_FALSE(isLoaded("ioexample.so"));

  // It gave a source before it threw; another one has no such entry, a third needs no source.
  EXPECT_EQ(openSource("iophases.so", reader.get(), nullptr), -1);
  EXPECT_FALSE(isLoaded("iophases.so"));
  EXPECT_EQ(openSource("iokyr.so", reader.get(), nullptr), 0);
  EXPECT_EQ(openInput(), kyrDiskError) << "by the path";
  writeFile("in.txt", "1");
  ASSERT_EQ(openSource("ioexample.so", reader.get(), parameters()), 0);
  reader.reset();
  EXPECT_FALSE(isLoaded("ioexample.so"));
}

TEST_F(BuiltModuleTest, OlderHeadersAreToldOrLeaveACallUnknown) {
  if (authors == nullptr) GTEST_SKIP() << "authors.sh builds it";
  for (const auto& [name, why] :
       {std::pair("iolonger.so", "it was built for headers "), {"iosilent.so", "undefined symbol: "}}) {
    std::filesystem::copy(folderOfModules + name, "lib");
    const ProcessingStep step(name);
    EXPECT_EQ(step.loadFailed, 1) << name;
    EXPECT_NE(step.whyNot().find(why), std::string::npos) << step.whyNot();
  }
}

TEST_F(BuiltModuleTest, TheExampleSaysWhatIsWrong) {
  EXPECT_NE(run("1 2\n", 0), 0);
  EXPECT_TRUE(consoleHas("  *** Text can be written as a dataset (\"Kyr\") only."));
  for (const auto& [text, line] : {std::pair{"1 2\n3 x\n", "  *** Line 2 holds something else than numbers."},
                                   {"1 2\n\n3\n", "  *** Line 3 has 1 samples and not 2 as the first trace."},
                                   {"# nothing\n", "  *** There is no trace in the input file."}}) {
    EXPECT_NE(run(text), 0);
    EXPECT_TRUE(consoleHas(line)) << line;
  }
  toolkit.onPump = [](long) { requestStopOfJobs([] {}); };
  const RunningJob around(nullptr);
  EXPECT_NE(run("1 2\n"), 0);
  EXPECT_TRUE(consoleHas("  *** Stopped."));
}

TEST_F(ModuleTest, TheRecordsConsoleIsWhereItsLinesGo) {
  forgetConsole();
  do_console_out(&record, "dropped: no console yet");
  do_console_out(nullptr, "dropped");
  setConsole(&record);
  do_console_out(&record, "kept");
  EXPECT_EQ(consoleWithoutDates(), Lines{"kept"});
  killConsole();
  setConsole(&record);
  EXPECT_EQ(record.consoleLine, nullptr);
}

TEST_F(ModuleTest, AFailedAllocationIsToldByName) {
  forgetConsole();
  EXPECT_TRUE(NullCheck(&record, "trace"));
  EXPECT_FALSE(NullCheck(nullptr, "trace"));
  EXPECT_EQ(toolkit.errors, Lines{"Error allocating memory for trace."});
  EXPECT_EQ(consoleWithoutDates(), Lines{"  *** Error allocating memory for trace."});
}

TEST_F(ModuleTest, BuildsFileNames) {
  char name[12];
  DIRECTORY directory{"/data"};
  EXPECT_TRUE(BuildFileName(&directory, "a.kyr", name));
  EXPECT_STREQ(name, "/data/a.kyr");
  EXPECT_FALSE(BuildFileName(&directory, "ab.kyr", name));
  EXPECT_STREQ(name, "") << "no path is better than half of one";
  directory = {"/"};
  EXPECT_TRUE(BuildFileName(&directory, "a", name));
  EXPECT_STREQ(name, "/a");
}

}  // namespace
