/// How the value of a property stands in its 32-bit word, and how it becomes a variable of the caller's type.
#pragma once

#include <cstdint>
#include <optional>

#include "libkyr/properties.h"

/// The properties that a code names, the free ones included (their name is null); nothing for any other code.
std::optional<PropertyEntry> traceProperty(int code);
std::optional<PropertyEntry> datasetProperty(int code);

/// The word of "no value".
std::uint32_t nullWord(const PropertyEntry& entry);

/// The word that keeps `*value`, of KyrType `type`; nothing for an unknown type or unit, or no value.
std::optional<std::uint32_t> wordFromValue(const PropertyEntry& entry, int type, int units, const void* value);

/// Gives a word out. @return kyrOk, or kyrBadCall with a zero value
int valueFromWord(const PropertyEntry& entry, std::uint32_t word, int type, int units, void* value);

/// Leaves a zero in a value that could not be fetched. @return kyrBadCall
int failedValue(int type, void* value);
