/// Whether a file can be a shared object of this machine, judged by its headers (the ELF format, System V ABI). The
/// dynamic loader takes a damaged file at its word and dies of it; what is cut off or confused is found here first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

/// Bytes from a file's beginning that are enough for any judgement.
constexpr std::size_t kElfHeadSize = 65536;

/// @param head the file's first elfHeadSize bytes, or all of a shorter file
/// @param fileSize bytes of the whole file
/// @return what is wrong, in a few words; empty when nothing speaks against loading it
std::string elfFault(std::span<const unsigned char> head, std::uint64_t fileSize);
