/// The runtimes that there are. A program calls one of these before xvt_app_create, or both, in the order in which they
/// are to be tried: the first that can be opened is taken.
#pragma once

/// Windows on a display.
void xvt_app_offer_screen();
/// Windows in memory, for scripts and tests: nothing is drawn, and hands there are only a script's.
void xvt_app_offer_headless();
