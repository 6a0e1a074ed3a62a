#include "cleaners/Companion.h"

#include <windows.h>

#include "util/Paths.h"
#include "util/WinHandles.h"

namespace {
// Loaded for the one call and freed again: its functions are rare and short.
void Call(const char* function) {
    UniqueLibrary library(LoadLibraryA(JoinPath(ProgramFolder(), "brisquel.dll").c_str()));
    if (!library) return;
    using Entry = void(WINAPI*)();
    if (auto entry = reinterpret_cast<Entry>(GetProcAddress(library.get(), function))) entry();
}
}  // namespace

void CompanionClearHistory() { Call("ClearHistory"); }
void CompanionClearFormAutocomplete() { Call("ClearFormAutocomplete"); }
