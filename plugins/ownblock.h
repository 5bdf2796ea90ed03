/// How the program's own modules begin their parameter blocks (quarlo/tapelib/frame/formatblocks.h).
#pragma once

#include "libkyr/text.h"
#include "plugins/kyrmodule.h"

/// A block with its defaults still to come: zeros behind a head that says what it is.
template <typename Block>
Block* beginBlock(int* params, const char* signature) {
  auto* const block = reinterpret_cast<Block*>(params);
  *block = {};
  copyText(block->head.signature, signature);
  block->head.size = sizeof(Block);
  block->head.version = KYR_BLOCK_VERSION;
  return block;
}
