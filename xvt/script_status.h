/// What the runtime floor asks of the script player.
#pragma once

/// The exit status that a scripted run deserves: 0 when no script was loaded, when it came to its end or quit; 1 (after
/// a line on standard error) when a step failed or the program ended before the script was done. xvt_app_create asks
/// once, when its event loop has ended and before it returns.
int xvt_script_status();
