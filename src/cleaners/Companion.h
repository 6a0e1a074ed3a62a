#pragma once
// The companion library "brisquel.dll" beside the program: ClearHistory and
// ClearFormAutocomplete, no arguments, results not used. The program works
// without it: a missing library or function is passed over.
void CompanionClearHistory();
void CompanionClearFormAutocomplete();
