// SEG Y files as sources of traces; every recording of others as an independent reader has it, where QUARLO_SHARED_DATA
// names their folder.
#include "quarlo/tapelib/frame/segysource.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "tests/support/format_facts.h"
#include "tests/support/segy_shipped.h"
#include "tests/support/test_files.h"

namespace {

using Lines = std::vector<std::string>;

class SegySource : public testing::Test {
 protected:
  std::unique_ptr<SegyFileSource> open(const std::string& path, const SegySourceParams& params) {
    said_.clear();
    reason_.clear();
    return SegyFileSource::open(
        path, shipped("segy-rev2.txt"), params, [this](const std::string& line) { said_.push_back(line); }, &reason_);
  }

  Lines said_;
  std::string reason_;
};

TEST_F(SegySource, RecordsHaveThePlacesOfTheLargest) {
  const TestFolder folder;
  std::string bytes = std::string(3200, ' ') + header(400, {{17, 2, 4000}, {21, 2, 65000}, {25, 2, 3}});
  for (const unsigned file : {7U, 7U, 9U})
    bytes += header(240, {{9, 4, file}, {109, 2, file}, {115, 2, 65000}}) + std::string("\0\1\0\2", 4) +
             std::string(129996, '\0');
  const std::string path = folder.path("a.sgy");
  writeFile(path, bytes);
  const auto source = open(path, {});
  ASSERT_TRUE(source) << reason_;
  const SeisCounts counts = seisOrgCounts(source->org());
  EXPECT_EQ(std::tuple(counts.records, counts.tracesPerRecord, counts.samples), std::tuple(2, 2, 65000));
  EXPECT_EQ(source->format().interval, 0.004);
  EXPECT_EQ(source->position(2, 1), 3600 + 2 * 130240);
  EXPECT_EQ(source->position(2, 2), -1);
  EXPECT_TRUE(source->uses(folder.path("./a.sgy").c_str()));
  std::vector<float> samples(65000);
  TraceInfo trace;
  EXPECT_EQ(source->read(2, 1, samples.data(), &trace), kyrOk);
  EXPECT_EQ(std::tuple(samples[0], samples[1], property(trace, trFieldFile)), std::tuple(1.0F, 2.0F, 9.0));
  EXPECT_EQ(source->read(2, 2, samples.data(), &trace), kyrOk);
  EXPECT_EQ(std::tuple(samples[0], property(trace, trKillFlag)), std::tuple(0.0F, double{killNeverWritten}));
  EXPECT_EQ(source->read(1, 2, nullptr, &trace), kyrOk);
  EXPECT_EQ(source->surveyRecords().front(),
            "A new record where \"FieldFile\" changes: 2 records, at most 2 traces each");
  std::filesystem::resize_file(path, 3601);
  for (int read = 1; read <= 11; ++read) EXPECT_EQ(source->read(1, 1, samples.data(), &trace), kyrTraceLost);
  EXPECT_EQ(property(trace, trKillFlag), killUnreadable);
  source->close();
  EXPECT_EQ(said_.front(), "  *** Trace 1, at byte 3600 of " + path + ", cannot be read.");
  said_.erase(said_.begin(), said_.begin() + 10);
  EXPECT_EQ(said_, (Lines{"  *** 11 reads of traces of " + path + " failed.",
                          "2 traces have a delay, the first one of 9 ms: kept in trace property 150"}));
  EXPECT_FALSE(open(path, {}));
  EXPECT_EQ(reason_, "it has no whole trace");
  EXPECT_FALSE(open(folder.path("none"), {}));
  EXPECT_EQ(reason_, "No such file or directory");
}

/// A number as facts write it, whatever its decimals.
double numberOf(const std::string& text) { return std::strtod(text.c_str(), nullptr); }

void checkLayout(const SegyLayout& layout, const std::string& facts) {
  const std::pair<const char*, double> counts[] = {{"format", layout.sampleFormat},
                                                   {"text_headers", static_cast<double>(layout.extendedHeaders)},
                                                   {"data_at", static_cast<double>(layout.firstTrace)},
                                                   {"extra_trace_headers", (layout.headerBytes - 240) / 240.0},
                                                   {"traces", static_cast<double>(layout.traces)},
                                                   {"samples", layout.samples()},
                                                   {"interval_us", layout.interval}};
  for (const auto& [key, value] : counts) EXPECT_EQ(value, numberOf(fact(facts, key))) << key;
  EXPECT_EQ(layout.reading.bigEndian ? "\"big\"" : "\"little\"", fact(facts, "byte_order"));
  const std::string text = fact(facts, "text");
  EXPECT_TRUE(text == "\"other\"" || text == (layout.text == SegyText::Ebcdic ? "\"EBCDIC\"" : "\"ASCII\"")) << text;
}

void checkHeader(std::uint64_t trace, const TraceInfo& header, const std::string& facts) {
  const std::size_t shown = facts.find(formatText("{\"trace\": %d, \"headers\"", static_cast<int>(trace)));
  if (shown == std::string::npos) return;
  const std::pair<const char*, int> properties[] = {
      {"field_record", 8},      {"channel", 10},    {"source_point", 5},
      {"trace_id", 12},         {"offset", 16},     {"receiver_elevation", 22},
      {"source_elevation", 19}, {"source_x", 17},   {"source_y", 18},
      {"receiver_x", 20},       {"receiver_y", 21}, {"inline", 2},
      {"crossline", 3}};
  for (const auto& [key, code] : properties)
    EXPECT_EQ(static_cast<float>(property(header, code)), static_cast<float>(numberOf(fact(facts, key, shown)))) << key;
}

void checkTraces(SegyFileSource& source, bool hasHeaders, const std::string& facts) {
  const SeisCounts counts = seisOrgCounts(source.org());
  EXPECT_EQ(counts.records, numberOf(fact(facts, "records")));
  std::vector<float> samples(static_cast<std::size_t>(counts.samples));
  std::uint64_t traces = 0;
  for (int record = 1; record <= counts.records; ++record) {
    std::uint32_t sum = 0;
    int inRecord = 0;
    TraceInfo header;
    for (; inRecord < counts.tracesPerRecord && source.position(record, inRecord + 1) >= 0; ++inRecord) {
      ASSERT_EQ(source.read(record, inRecord + 1, samples.data(), &header), kyrOk);
      sum = crc32(samples, sum);
      ++traces;
      if (hasHeaders) checkHeader(traces, header, facts);
    }
    const std::string expected = formatText("{\"field_file\": %d, \"traces\": %d, \"crc32\": \"%08x\"",
                                            static_cast<int>(property(header, trFieldFile)), inRecord, sum);
    EXPECT_NE(facts.find(expected), std::string::npos) << expected;
  }
  EXPECT_EQ(traces, source.layout().traces);
}

TEST_F(SegySource, EveryRealFileIsThatOfTheIndependentReader) {
  const char* shared = std::getenv("QUARLO_SHARED_DATA");
  if (shared == nullptr) GTEST_SKIP() << "QUARLO_SHARED_DATA names no folder with recordings";
  std::istringstream facts(readFile(std::string(shared) + "/format_facts.jsonl"));
  int files = 0;
  for (std::string line; std::getline(facts, line);) {
    const std::string name = fact(line, "file");
    if (fact(line, "kind") != "\"SEG Y\"") continue;
    SCOPED_TRACE(name);
    const auto source = open(std::string(shared) + "/" + name.substr(1, name.size() - 2), {.gridLines = true});
    ++files;
    EXPECT_EQ(source == nullptr, fact(line, "traces") == "0") << reason_;
    if (source == nullptr) continue;
    checkLayout(source->layout(), line);
    // The other reader multiplies by a scalar of 82.
    checkTraces(*source, name.find("ld0042") == std::string::npos, line);
  }
  EXPECT_GE(files, 27);
}

}  // namespace
