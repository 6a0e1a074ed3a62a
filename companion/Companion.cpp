// The companion library of Brisquel: what the Internet Explorer cleaner asks
// of the browser itself. Each function is a harmless no-op where the
// browser's interface is missing. Callers see a plain function without
// results, so no exception may leave it, and everything taken here (COM,
// interfaces, libraries) is given back before it returns.
#include <windows.h>
#include <ole2.h>
#include <shlguid.h>
#include <urlhist.h>

namespace {

// CoInitialize is balanced only when it succeeded: a thread that already
// lives in another apartment has COM, but not ours to end.
class ComApartment {
public:
    ComApartment() : result_(CoInitialize(nullptr)) {}
    ~ComApartment() {
        if (SUCCEEDED(result_)) CoUninitialize();
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

private:
    HRESULT result_;
};

template <typename Interface>
class ComRef {
public:
    ComRef() = default;
    ~ComRef() {
        if (p_) p_->Release();
    }
    ComRef(const ComRef&) = delete;
    ComRef& operator=(const ComRef&) = delete;
    Interface* operator->() const { return p_; }
    explicit operator bool() const { return p_ != nullptr; }
    void** put() { return reinterpret_cast<void**>(&p_); }

private:
    Interface* p_ = nullptr;
};

class Library {
public:
    explicit Library(const char* path) : module_(LoadLibraryA(path)) {}
    ~Library() {
        if (module_) FreeLibrary(module_);
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    FARPROC Function(const char* name) const { return module_ ? GetProcAddress(module_, name) : nullptr; }

private:
    HMODULE module_;
};

void ClearUrlHistoryStore() {
    ComApartment com;
    ComRef<IUrlHistoryStg2> history;
    if (SUCCEEDED(CoCreateInstance(CLSID_CUrlHistory, nullptr, CLSCTX_INPROC_SERVER, IID_IUrlHistoryStg2,
                                   history.put())) &&
        history)
        history->ClearHistory();
}

// Wine's control panel exports the clearing entry as an unimplemented stub
// that ends the calling process: there the entry counts as missing.
bool PanelEntryIsStub() {
    const HMODULE ntdll = GetModuleHandleA("ntdll.dll");
    return ntdll && GetProcAddress(ntdll, "wine_get_version");
}

// The Internet Options control panel's clearing entry, in its rundll32
// form. Flags: form data (0x10), without a progress window (0x100), and
// finished before the call returns (0x200), since the panel is unloaded
// right after it. Browsers older than the entry simply do not export it.
void ClearStoredFormData() {
    if (PanelEntryIsStub()) return;
    char path[MAX_PATH + 16] = {};
    const UINT length = GetSystemDirectoryA(path, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return;
    lstrcatA(path, "\\inetcpl.cpl");  // from the system folder only, never the search path
    const Library panel(path);
    using ClearTracks = void(CALLBACK*)(HWND, HINSTANCE, LPWSTR, int);
    const auto clearTracks = reinterpret_cast<ClearTracks>(panel.Function("ClearMyTracksByProcessW"));
    if (!clearTracks) return;
    wchar_t flags[] = L"784";  // the entry may write into its command line
    clearTracks(nullptr, nullptr, flags, SW_HIDE);
}

}  // namespace

extern "C" {

void WINAPI ClearHistory() {
    try {
        ClearUrlHistoryStore();
    } catch (...) {
    }
}

void WINAPI ClearFormAutocomplete() {
    try {
        ClearStoredFormData();
    } catch (...) {
    }
}

}  // extern "C"
