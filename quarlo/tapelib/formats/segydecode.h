/// Numbers out of the fields of SEG Y headers, by their description: the reverse of segyencode.h.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "quarlo/tapelib/formats/segyformat.h"

/// How the headers of one file are read.
struct SegyReading {
  bool bigEndian = true;
  /// The file is of revision 2 or later: fields that replace others count. In older files anything may stand there.
  bool extended = false;
};

/// A number under its SEG Y scalar: multiplied by a positive one, divided by a negative one, as it is for 0.
/// @return nothing for a scalar that is no power of ten up to 10000, as the standard has them
std::optional<double> segyScaled(double number, double scalar);

/// The reverse: what stands in a field whose scalar is this one. Scalars that are none are 1 here.
double segyUnscaled(double number, double scalar);

/// The number that a field holds, as it stands there. @return nothing when the header does not hold the field
std::optional<double> storedNumber(std::span<const char> header, const SegyField& field, bool bigEndian);

/// One named value of a header, with all that its field says of it.
class SegyValue {
 public:
  /// A value that no header has.
  SegyValue() = default;
  /// @param format outlives this @param field one of its fields, or null
  SegyValue(const SegyFormat& format, const SegyField* field, SegyReading reading);
  /// The same by name.
  SegyValue(const SegyFormat& format, bool isBinary, const char* name, SegyReading reading);

  /// The number stored, divided by the field's scale and times its scalar; that of the field that replaces it where it
  /// is not 0; the fixed value of an input description whatever is stored.
  /// @param oddScalar set to true when the scalar is none of the standard's, and passed over
  /// @return nothing without a field, or when the header is too short for it
  std::optional<double> in(std::span<const char> header, bool* oddScalar = nullptr) const;
  /// The same of a value that cannot be negative, such as an interval: an integer field is taken as unsigned; what is
  /// no positive number is 0.
  double positiveIn(std::span<const char> header) const;
  /// The same as a count, its decimals cut off.
  std::uint64_t countIn(std::span<const char> header) const;

 private:
  const SegyField* field_ = nullptr;
  const SegyField* scalar_ = nullptr;
  const SegyField* replacement_ = nullptr;
  std::optional<double> fixed_;
  bool bigEndian_ = true;
};
