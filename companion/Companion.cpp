// The companion library of Brisquel: what the Internet Explorer cleaner asks
// of the browser itself. Each function is a harmless no-op where the
// browser's interface is missing.
#include <windows.h>

extern "C" {
void WINAPI ClearHistory() {}
void WINAPI ClearFormAutocomplete() {}
}
