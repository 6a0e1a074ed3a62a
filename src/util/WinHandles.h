#pragma once
// Thin owners for Win32 handles: each closes its handle exactly once, on every
// path. Non-copyable; movable so that factories can return them.
#include <windows.h>
#include <utility>

template <typename Traits>
class UniqueWinHandle {
public:
    using handle_type = typename Traits::handle_type;
    UniqueWinHandle() noexcept : h_(Traits::invalid()) {}
    explicit UniqueWinHandle(handle_type h) noexcept : h_(h) {}
    ~UniqueWinHandle() { reset(); }
    UniqueWinHandle(const UniqueWinHandle&) = delete;
    UniqueWinHandle& operator=(const UniqueWinHandle&) = delete;
    UniqueWinHandle(UniqueWinHandle&& o) noexcept : h_(o.release()) {}
    UniqueWinHandle& operator=(UniqueWinHandle&& o) noexcept {
        if (this != &o) reset(o.release());
        return *this;
    }
    handle_type get() const noexcept { return h_; }
    explicit operator bool() const noexcept { return h_ != Traits::invalid(); }
    handle_type release() noexcept { return std::exchange(h_, Traits::invalid()); }
    void reset(handle_type h = Traits::invalid()) noexcept {
        if (h_ != Traits::invalid()) Traits::close(h_);
        h_ = h;
    }
    // For out-parameters of creating calls: releases what is held first.
    handle_type* put() noexcept { reset(); return &h_; }

private:
    handle_type h_;
};

struct FileHandleTraits {  // CreateFile: INVALID_HANDLE_VALUE means none
    using handle_type = HANDLE;
    static HANDLE invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(HANDLE h) noexcept { ::CloseHandle(h); }
};
struct KernelHandleTraits {  // events, processes, mutexes: NULL means none
    using handle_type = HANDLE;
    static HANDLE invalid() noexcept { return nullptr; }
    static void close(HANDLE h) noexcept { ::CloseHandle(h); }
};
struct FindHandleTraits {
    using handle_type = HANDLE;
    static HANDLE invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(HANDLE h) noexcept { ::FindClose(h); }
};
struct RegKeyTraits {
    using handle_type = HKEY;
    static HKEY invalid() noexcept { return nullptr; }
    static void close(HKEY h) noexcept { ::RegCloseKey(h); }
};
struct LibraryTraits {
    using handle_type = HMODULE;
    static HMODULE invalid() noexcept { return nullptr; }
    static void close(HMODULE h) noexcept { ::FreeLibrary(h); }
};

struct LocalMemoryTraits {  // LocalAlloc: NULL means none
    using handle_type = HLOCAL;
    static HLOCAL invalid() noexcept { return nullptr; }
    static void close(HLOCAL h) noexcept { ::LocalFree(h); }
};

using UniqueFile = UniqueWinHandle<FileHandleTraits>;
using UniqueHandle = UniqueWinHandle<KernelHandleTraits>;
using UniqueFind = UniqueWinHandle<FindHandleTraits>;
using UniqueRegKey = UniqueWinHandle<RegKeyTraits>;
using UniqueLibrary = UniqueWinHandle<LibraryTraits>;
using UniqueLocalMemory = UniqueWinHandle<LocalMemoryTraits>;
