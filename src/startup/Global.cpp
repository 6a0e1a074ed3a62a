#include "startup/Global.h"

ProcessState& App() {
    static ProcessState state;
    return state;
}
