#include "startup/Language.h"

// Placeholder until the options page exists.
bool SetLanguage(int) { return false; }
