// Owners of Windows handles: one template, one alias per kind.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <utility>

// Traits: Type, Null() and Close(Type). The handle is closed exactly once, by the last owner.
template <class Traits>
class UniqueHandle {
public:
    using Type = typename Traits::Type;

    UniqueHandle() noexcept = default;
    explicit UniqueHandle(Type handle) noexcept : m_handle(handle) {}
    UniqueHandle(UniqueHandle&& other) noexcept : m_handle(other.Detach()) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        if (this != &other) Reset(other.Detach());
        return *this;
    }
    UniqueHandle(const UniqueHandle&) = delete;
    UniqueHandle& operator=(const UniqueHandle&) = delete;
    ~UniqueHandle() { Reset(); }

    Type Get() const noexcept { return m_handle; }
    explicit operator bool() const noexcept { return m_handle != Traits::Null(); }
    // For calls that store a handle of the caller's own: what was held is closed first.
    Type* Put() noexcept {
        Reset();
        return &m_handle;
    }
    Type Detach() noexcept { return std::exchange(m_handle, Traits::Null()); }
    void Reset(Type handle = Traits::Null()) noexcept {
        const Type old = std::exchange(m_handle, handle);
        if (old != Traits::Null()) Traits::Close(old);
    }

private:
    Type m_handle = Traits::Null();
};

template <class Handle>
struct NullHandleTraits {
    using Type = Handle;
    static Type Null() noexcept { return nullptr; }
};

struct FileHandleTraits {
    using Type = HANDLE;
    static Type Null() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Type handle) noexcept { CloseHandle(handle); }
};

struct TokenTraits : NullHandleTraits<HANDLE> {
    static void Close(Type handle) noexcept { CloseHandle(handle); }
};

struct EventTraits : NullHandleTraits<HANDLE> {
    static void Close(Type handle) noexcept { CloseHandle(handle); }
};

struct RegistryKeyTraits : NullHandleTraits<HKEY> {
    static void Close(Type handle) noexcept { RegCloseKey(handle); }
};

struct IconTraits : NullHandleTraits<HICON> {
    static void Close(Type handle) noexcept { DestroyIcon(handle); }
};

struct FontTraits : NullHandleTraits<HFONT> {
    static void Close(Type handle) noexcept { DeleteObject(handle); }
};

struct MenuTraits : NullHandleTraits<HMENU> {
    static void Close(Type handle) noexcept { DestroyMenu(handle); }
};

struct ImageListTraits : NullHandleTraits<HIMAGELIST> {
    static void Close(Type handle) noexcept { ImageList_Destroy(handle); }
};

struct DeviceContextTraits : NullHandleTraits<HDC> {
    static void Close(Type handle) noexcept { DeleteDC(handle); }
};

struct GlobalMemoryTraits : NullHandleTraits<HGLOBAL> {
    static void Close(Type handle) noexcept { GlobalFree(handle); }
};

using FileHandle = UniqueHandle<FileHandleTraits>;
using TokenHandle = UniqueHandle<TokenTraits>;
using EventHandle = UniqueHandle<EventTraits>;
using RegistryKey = UniqueHandle<RegistryKeyTraits>;
using IconHandle = UniqueHandle<IconTraits>;
using FontHandle = UniqueHandle<FontTraits>;
using MenuHandle = UniqueHandle<MenuTraits>;
using ImageListHandle = UniqueHandle<ImageListTraits>;
using DeviceContext = UniqueHandle<DeviceContextTraits>;
using GlobalMemory = UniqueHandle<GlobalMemoryTraits>;
