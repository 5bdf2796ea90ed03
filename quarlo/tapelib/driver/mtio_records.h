/// The tape driver's own records and operation codes (mtop, mtget, MTREW, GMT_EOF ...). Only this file and
/// st_driver.cpp name the system's tape headers.
#pragma once

#include <sys/mtio.h>
