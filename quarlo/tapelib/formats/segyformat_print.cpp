// A SEG Y format description as text, and its check.
#include <algorithm>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segyformat_keys.h"
#include "quarlo/tapelib/formats/segyformat_text.h"

namespace {

std::string oneLine(std::string_view text) {
  std::string line(text);
  std::ranges::replace_if(
      line, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 127; }, ' ');
  return std::string(trimText(line));
}

/// The lines of one section. What is 0 or empty is not written.
class Lines {
 public:
  explicit Lines(std::string* target) : text_(*target) {}

  void add(const char* key, const std::string& value) {
    if (!value.empty()) text_ += std::string(key) + " = " + value + '\n';
  }

  template <typename Record>
  void addSettings(std::span<const segytext::Setting<Record>> settings, const Record& record) {
    for (const auto& setting : settings)
      if (const int value = setting.value(record); value != 0)
        add(setting.key, setting.isFlag ? "yes" : segytext::numberText(value));
  }

 private:
  std::string& text_;
};

std::string outputProperties(const SegyField& field) {
  std::string numbers;
  const int count = std::clamp(field.kyrHeaderCount, 0, kMaxOutputProperties);
  for (int i = 0; i < count; ++i) numbers += (i == 0 ? "" : " ") + segytext::numberText(int{field.outputKyrHeader[i]});
  return numbers;
}

void printField(const SegyField& field, std::string* text) {
  using segytext::numberText;
  using segytext::valueText;
  const int type = isKyrType(field.itsType) ? field.itsType : byteType;  // a type that is none takes one byte
  *text +=
      std::string(field.itIsBinaryField != 0 ? "\n[binary " : "\n[trace ") + oneLine(fieldText(field.itsName)) + "]\n";
  Lines lines(text);
  lines.add("description", oneLine(fieldText(field.itsDescription)));
  lines.add("type", segytext::typeName(type));
  lines.add("byte", numberText(std::int64_t{field.itsOffset} + 1));
  if (field.itsScaleFactor != 1.0) lines.add("scale", numberText(field.itsScaleFactor));
  lines.add("scale-field", oneLine(fieldText(field.itsScaleField)));
  lines.add("replaces", oneLine(fieldText(field.itsReplaced)));
  if (field.itIsOverridden != 0) lines.add("override", valueText(field.itsOverrideValue, type));
  if (field.itHasRange != 0)
    lines.add("range", valueText(field.itsRangeMin, type) + ' ' + valueText(field.itsRangeMax, type));
  if (field.inputKyrHeader != trNone) lines.add("input-property", numberText(int{field.inputKyrHeader}));
  lines.add("output-properties", outputProperties(field));
  lines.addSettings(segytext::fieldSettings(), field);
}

/// The oldest version of the form that can say it: readers of the first know five types and no relations of fields.
int versionNeeded(const SegyFormat& format) {
  const auto isNew = [](const std::unique_ptr<SegyField>& field) {
    return (field->itsType > doubleFloatType && isKyrType(field->itsType)) || field->itsScaleField[0] != '\0' ||
           field->itsReplaced[0] != '\0';
  };
  return std::ranges::any_of(format.itsOwnedFields, isNew) ? kSegyTextVersion : kSegyTextReadableFrom;
}

void printFields(const SegyField* list, std::string* text) {
  for (const SegyField* field = list; field != nullptr; field = field->nextField) printField(*field, text);
}

void checkFields(const SegyFormat& format, bool isBinary, std::vector<std::string>* warnings) {
  const char* const header = isBinary ? "binary" : "trace";
  const int bytes = segyHeaderBytes(format, isBinary);
  const SegyField* const list = isBinary ? format.itsBinaryFields : format.itsTraceFields;
  for (const SegyField* field = list; field != nullptr; field = field->nextField) {
    if (!headerHolds(static_cast<std::size_t>(bytes), *field))
      warnings->push_back(formatText("field \"%s\" does not fit the %d bytes of the %s header and will be left out",
                                     field->itsName, bytes, header));
    for (const char* name : {field->itsScaleField, field->itsReplaced})
      if (name[0] != '\0' && getField(list, name) == nullptr)
        warnings->push_back(
            formatText("field \"%s\" names \"%s\", which the %s header does not have", field->itsName, name, header));
    for (const SegyField* other = field->nextField; other != nullptr; other = other->nextField)
      if (fieldsMeet(*field, *other))
        warnings->push_back(
            formatText("fields \"%s\" and \"%s\" of the %s header overlap", field->itsName, other->itsName, header));
  }
}

}  // namespace

std::string printSegyFormat(const SegyFormat& format) {
  const std::string version = segytext::numberText(versionNeeded(format));
  std::string text = std::string(segytext::kSignature) + version + std::string(segytext::kReadable) + version + "\n\n";
  Lines lines(&text);
  lines.add("name", oneLine(fieldText(format.itsName)));
  lines.addSettings(segytext::formatSettings(), format);
  const FILE_SPEC& file = format.itsTextFileSpec;
  lines.add("reel-header-file", oneLine(joinPath(fieldText(file.dir.path), fieldText(file.name))));
  if (std::ranges::any_of(format.itsTraceTypes, [](int type) { return type != 0; }))
    lines.add("trace-types",
              formatText("%d %d %d", format.itsTraceTypes[0], format.itsTraceTypes[1], format.itsTraceTypes[2]));
  printFields(format.itsBinaryFields, &text);
  printFields(format.itsTraceFields, &text);
  return text;
}

std::vector<std::string> checkSegyFormat(const SegyFormat& format) {
  std::vector<std::string> warnings;
  if (format.itHasBinaryHeader != 0) checkFields(format, true, &warnings);
  if (format.itHasTraceHeader != 0) checkFields(format, false, &warnings);
  return warnings;
}
