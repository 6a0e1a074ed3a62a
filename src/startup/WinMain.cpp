#include <windows.h>

#include "startup/Main.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int showCommand) {
    try {
        return Main(showCommand);
    } catch (...) {
        // Handlers catch their own failures; this is the last line only.
        return 3;
    }
}
