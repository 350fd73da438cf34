// Reading a log while the file functions fail, deliver less, or the log changes under the reader.
#pragma once

#include <windows.h>

#include <functional>

#include "lists/closed_log.h"
#include "tests/support/error_of.h"
#include "tests/support/import_patch.h"

// Stands before the file functions of this program while a log is read, and only then.
class FileFaults {
public:
    FileFaults() { s_current = this; }
    FileFaults(const FileFaults&) = delete;
    FileFaults& operator=(const FileFaults&) = delete;
    ~FileFaults() { s_current = nullptr; }

    enum Function { Create, Type, Size, Position, Read };

    bool isArmed = false;
    int function = Read;
    long failing = 0;  // which call of the function, counted from 1
    DWORD error = ERROR_SUCCESS;
    bool happened = false;
    DWORD longestRead = 0;  // 0 for any
    std::function<void(long call)> beforeRead;

    HRESULT Read1(ClosedLog& log) {
        m_calls = 0;
        happened = false;
        isArmed = true;
        const HRESULT result = ErrorOf([&] { log.ReadClosedLog(); });
        isArmed = false;
        return result;
    }

private:
    static bool Fails(int called) {
        FileFaults& self = *s_current;
        if (!self.isArmed || self.function != called || ++self.m_calls != self.failing) return false;
        self.happened = true;
        SetLastError(self.error);
        return true;
    }
    static HANDLE WINAPI FakeCreate(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                    DWORD disposition, DWORD flags, HANDLE model) {
        if (Fails(Create)) return INVALID_HANDLE_VALUE;
        return s_current->m_create.Original<decltype(&CreateFileW)>()(path, access, share, security,
                                                                      disposition, flags, model);
    }
    static DWORD WINAPI FakeType(HANDLE file) {
        if (Fails(Type)) return FILE_TYPE_UNKNOWN;
        return s_current->m_type.Original<decltype(&GetFileType)>()(file);
    }
    static BOOL WINAPI FakeSize(HANDLE file, PLARGE_INTEGER size) {
        if (Fails(Size)) return FALSE;
        return s_current->m_size.Original<decltype(&GetFileSizeEx)>()(file, size);
    }
    static BOOL WINAPI FakePosition(HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER position,
                                    DWORD method) {
        if (Fails(Position)) return FALSE;
        return s_current->m_position.Original<decltype(&SetFilePointerEx)>()(file, distance, position,
                                                                             method);
    }
    static BOOL WINAPI FakeRead(HANDLE file, LPVOID buffer, DWORD count, LPDWORD done,
                                LPOVERLAPPED position) {
        FileFaults& self = *s_current;
        if (self.isArmed && self.beforeRead) {
            self.isArmed = false;
            self.beforeRead(++self.m_reads);
            self.isArmed = true;
        }
        if (Fails(Read)) {
            *done = 0;
            return FALSE;
        }
        if (self.isArmed && self.longestRead != 0 && count > self.longestRead) count = self.longestRead;
        return self.m_read.Original<decltype(&ReadFile)>()(file, buffer, count, done, position);
    }

    static inline FileFaults* s_current = nullptr;
    long m_calls = 0;
    long m_reads = 0;
    const ImportPatch m_create{"kernel32.dll", "CreateFileW", &FakeCreate};
    const ImportPatch m_type{"kernel32.dll", "GetFileType", &FakeType};
    const ImportPatch m_size{"kernel32.dll", "GetFileSizeEx", &FakeSize};
    const ImportPatch m_position{"kernel32.dll", "SetFilePointerEx", &FakePosition};
    const ImportPatch m_read{"kernel32.dll", "ReadFile", &FakeRead};
};
