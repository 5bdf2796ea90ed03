/// The runtime that a test program's applications run in: windows on a display, or, where QUARLO_TEST_HEADLESS is set,
/// windows in memory. The same tests hold for both.
#pragma once

#include <cstdlib>

#include "xvt/offer.h"

inline bool isHeadless() { return std::getenv("QUARLO_TEST_HEADLESS") != nullptr; }

inline void offerTested() { isHeadless() ? xvt_app_offer_headless() : xvt_app_offer_screen(); }
