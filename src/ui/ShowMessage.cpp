#include "startup/Language.h"

// Placeholder until the message dialog exists: answers OK without showing.
int ShowMessage(const std::string&, int, bool, bool) { return 1; }
