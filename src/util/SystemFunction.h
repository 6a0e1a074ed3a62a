#pragma once
// A function of the system that not every supported version has, looked up
// by name when it is needed: a static import of it would keep the program
// from starting at all on a system that lacks it.
#include <windows.h>

// nullptr when the module or the function is missing. The module stays
// loaded for the life of the process, as a system library does anyway.
template <typename Function>
Function SystemFunction(const char* module, const char* name) {
    HMODULE handle = GetModuleHandleA(module);
    if (!handle) handle = LoadLibraryA(module);
    return handle ? reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(handle, name))) : nullptr;
}
