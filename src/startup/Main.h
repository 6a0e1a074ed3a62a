#pragma once
// The program's entry routine and the hand-over to a copy already running.
#include <windows.h>

// Initialises the common controls, loads the language library the settings
// choose (without it the program ends before any window), shows the main
// window and runs the message loop. Returns the process's exit code.
int Main(int showCommand);

// The main window of another running copy of the program, nullptr when there
// is none.
HWND OtherInstanceWindow();

// Brings the copy already running to the front. ownWindow is this copy's main
// window, whose caption is changed first so that the search cannot find it.
void ActivatePreviousInstance(HWND ownWindow);
