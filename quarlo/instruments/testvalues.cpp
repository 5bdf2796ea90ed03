#include "quarlo/instruments/testvalues.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "libkyr/text.h"

namespace {

constexpr long kNamedFailures = 10;

std::string quoted(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string field = "\"";
  for (const char one : text) field += one == '"' ? "\"\"" : std::string(1, one);
  return field + '"';
}

/// The shortest text that reads as the same number.
void putNumber(std::string* text, float value) {
  char digits[32];
  const auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), value);
  *text += ',';
  if (error == std::errc{}) text->append(digits, end);
}

}  // namespace

void TestValues::add(const TestedTrace& trace, std::vector<float> measures, bool failed) {
  rows_.push_back({trace, failed ? Result::Failed : Result::Passed, std::move(measures)});
}

void TestValues::addReference(const TestedTrace& trace, std::vector<float> measures) {
  rows_.push_back({trace, Result::Untested, std::move(measures)});
}

std::string TestValues::summary() const {
  const auto tested = std::ssize(rows_) - std::ranges::count(rows_, Result::Untested, &Row::result);
  std::string text = formatText("%td trace%s tested", tested, tested == 1 ? "" : "s");
  if (words_ == nullptr || words_->limit == nullptr) return text;
  const long failures = std::ranges::count(rows_, Result::Failed, &Row::result);
  text += formatText(", %ld failed", failures);
  long named = 0;
  for (const Row& row : rows_)
    if (row.result == Result::Failed && named < kNamedFailures)
      text += (named++ == 0 ? ": " : ", ") + std::to_string(row.trace.number);
  return failures > kNamedFailures ? text + ", ..." : text;
}

std::string TestValues::text() const {
  if (words_ == nullptr) return "";
  std::string text = "Test,File,Record,Field file,Trace,Channel";
  if (versus_) text += ",Versus record,Versus field file";
  for (const char* name : words_->measures) text += ',' + quoted(name);
  const std::size_t columns = width();
  for (std::size_t place = words_->measures.size(); place < columns; ++place)
    text += ',' + quoted(words_->further(static_cast<int>(place - words_->measures.size()) + 1));
  text += ',' + quoted(words_->limit != nullptr ? words_->limit : "Limit") + ",Result\r\n";
  for (const Row& row : rows_) putRow(&text, row, columns);
  return text;
}

/// Columns of measures. Further ones are as many as the trace with the most of them has.
std::size_t TestValues::width() const {
  std::size_t most = words_->measures.size();
  if (words_->further != nullptr)
    for (const Row& row : rows_) most = std::max(most, row.measures.size());
  return most;
}

void TestValues::putRow(std::string* text, const Row& row, std::size_t width) const {
  const auto& [trace, result, measures] = row;
  *text += quoted(words_->name) + ',' + quoted(file_) +
           formatText(",%d,%d,%d,%d", trace.record.number, trace.record.fieldFile, trace.number, trace.channel);
  if (versus_) *text += formatText(",%d,%d", versus_->number, versus_->fieldFile);
  for (const float measure : measures) putNumber(text, measure);
  text->append(width - measures.size(), ',');
  if (words_->limit == nullptr || result == Result::Untested) {
    *text += ",,\r\n";
    return;
  }
  putNumber(text, limit_);
  *text += result == Result::Failed ? ",failed\r\n" : ",passed\r\n";
}
