/// A hook into the wait of tlvAutoLoad.
#pragma once

#include <chrono>

/// How long a minute of the wait between two tapes lasts, for tests that have none to spare.
void setAutoLoadMinute(std::chrono::milliseconds length);
