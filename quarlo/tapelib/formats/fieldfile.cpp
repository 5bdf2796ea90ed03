#include "quarlo/tapelib/formats/fieldfile.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>

#include "libkyr/text.h"
#include "quarlo/tapelib/console.h"

int skipThisFile(ProcessRecord* procRecord, const MoreParams* theParams, int fieldFile) {
  // Both limits are excluded: users give the last number that they do not want.
  if (theParams->itHasMinMaxOn != 0 && (fieldFile <= theParams->itsFFMin || fieldFile >= theParams->itsFFMax)) {
    do_console_out(procRecord, formatText("SKIPPING RECORD. Field file %d is out of range.", fieldFile).c_str());
    return 1;
  }
  if (theParams->itHasListOn != 0 && std::ranges::count(theParams->itsFFList, fieldFile) > 0) {
    do_console_out(procRecord,
                   formatText("SKIPPING RECORD. Field file %d is in list selection to be skipped.", fieldFile).c_str());
    return 1;
  }
  return 0;
}

int getFFile(const char* fileName) {
  if (fileName == nullptr) return 0;
  const std::string_view name(fileName);
  const std::size_t first = std::min(name.find_first_of("0123456789"), name.size());
  int number = 0;
  const auto result = std::from_chars(name.data() + first, name.data() + name.size(), number);
  return result.ec == std::errc::result_out_of_range ? std::numeric_limits<int>::max() : number;
}

void checkHex(char* str) {
  char* kept = str;
  for (const char* next = str; *next != '\0'; ++next) {
    const bool isUpper = *next >= 'A' && *next <= 'F';
    if (isUpper || (*next >= 'a' && *next <= 'f') || (*next >= '0' && *next <= '9'))
      *kept++ = isUpper ? static_cast<char>(*next - 'A' + 'a') : *next;
  }
  *kept = '\0';
}
