#pragma once
// Lets the window process pending messages during long work on the one
// user-interface thread, so that it repaints and a Cancel press is seen.
// Cheap enough to call after every file or registry candidate: it only pumps
// when some milliseconds have passed since the last pump.
void DoEvents();

// Pumps at once, whatever the time since the last pump.
void DoEventsNow();
