/// What a run of a test measured: for the dialog's status line and, as comma-separated values, for other programs.
#pragma once

#include <initializer_list>
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
  const char* name;                            ///< "DC Offset Test"
  const char* title;                           ///< of the report, spaced out
  const char* end;                             ///< "--  End of ..."
  std::span<const char* const> measures = {};  ///< with their units, in the order of a trace's values
  const char* limit = nullptr;                 ///< with its unit; null for a test that fails no trace
};

class TestValues {
 public:
  TestValues() = default;
  TestValues(const TestWords& words, std::string file, float limit)
      : words_(&words), file_(std::move(file)), limit_(limit) {}

  /// Each line also names a second record.
  void compareWith(const FieldRecord& record) { versus_ = record; }
  /// @param measures as many as the test's words name
  void add(const TestedTrace& trace, std::initializer_list<float> measures, bool failed);
  /// A trace that others are compared with: it is told, and neither passes nor fails.
  void addReference(const TestedTrace& trace, std::initializer_list<float> measures);

  /// "%d traces tested, %d failed: 3, 17, ...", with the first ten that failed.
  std::string summary() const;
  /// One line a trace (RFC 4180), behind a line of names.
  std::string text() const;

 private:
  enum class Result { Passed, Failed, Untested };
  struct Row {
    TestedTrace trace;
    Result result;
  };
  void putRow(std::string* text, std::size_t number) const;

  const TestWords* words_ = nullptr;
  std::string file_;
  float limit_ = 0;
  std::optional<FieldRecord> versus_;
  std::vector<Row> rows_;
  std::vector<float> measures_;  // those of all rows, one row's behind the other's
};
