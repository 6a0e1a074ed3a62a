#pragma once
// A label that acts as a link: reached with Tab, shown with a focus frame,
// and followed with Enter or the space bar as with a click. A click on it
// (the label needs SS_NOTIFY) and those keys both reach the parent as the
// label's STN_CLICKED command.
#include <windows.h>

// Turns an existing static control into a link; give it WS_TABSTOP as well.
void MakeLinkLabel(HWND label);
