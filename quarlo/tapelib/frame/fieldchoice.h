/// The choice of field files in a parameter block, as skipThisFile takes it.
#pragma once

#include "quarlo/tapelib/formats/fieldfile.h"
#include "quarlo/tapelib/frame/formatblocks.h"

MoreParams fieldFileChoice(const KyrFieldFiles& files);
