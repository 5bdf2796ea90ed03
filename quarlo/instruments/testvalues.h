/// What a run of a test measured: for the dialog's status line and, as comma-separated values, for other programs.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

/// A record of the dataset.
struct FieldRecord {
  int number = 0;  ///< from 1
  int fieldFile = 0;
};

/// A trace of it that was read.
struct TestedTrace {
  FieldRecord record;
  int number = 0;  ///< from 1
  int channel = 0;
};

/// What tells one test from another.
struct TestWords {
  const char* name;                              ///< "DC Offset Test"
  const char* title;                             ///< of the report, spaced out
  const char* end;                               ///< "--  End of ..."
  std::span<const char* const> measures = {};    ///< with their units, in the order of a trace's values
  const char* limit = nullptr;                   ///< with its unit; null for a test that fails no trace
  std::string (*further)(int number) = nullptr;  ///< what measures behind those are named, counted from 1
};

class TestValues {
 public:
  TestValues() = default;
  TestValues(const TestWords& words, std::string file, float limit)
      : words_(&words), file_(std::move(file)), limit_(limit) {}

  /// Each line also names a second record.
  void compareWith(const FieldRecord& record) { versus_ = record; }
  /// @param measures those that the test's words name, and any number of further ones, if they name these
  void add(const TestedTrace& trace, std::vector<float> measures, bool failed);
  /// A trace that others are compared with: it is told, and neither passes nor fails.
  void addReference(const TestedTrace& trace, std::vector<float> measures);

  /// "%d traces tested, %d failed: 3, 17, ...", with the first ten that failed.
  std::string summary() const;
  /// One line a trace (RFC 4180), behind a line of names.
  std::string text() const;

 private:
  enum class Result { Passed, Failed, Untested };
  struct Row {
    TestedTrace trace;
    Result result;
    std::vector<float> measures;
  };
  std::size_t width() const;
  void putRow(std::string* text, const Row& row, std::size_t width) const;

  const TestWords* words_ = nullptr;
  std::string file_;
  float limit_ = 0;
  std::optional<FieldRecord> versus_;
  std::vector<Row> rows_;
};
