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

    // Which call of which function fails in a reading, counted from 1; 0 for none. A read without an error
    // ends without bytes.
    void Fail(int function, long call, DWORD error) {
        m_function = function;
        m_failing = call;
        m_error = error;
    }

    DWORD longestRead = 0;  // 0 for any
    std::function<void(long call)> beforeRead;

    // What a reading of the log fails with.
    HRESULT Reading(ClosedLog& log) {
        for (long& count : m_calls)
            count = 0;
        m_isArmed = true;
        const HRESULT result = ErrorOf([&] { log.ReadClosedLog(); });
        m_isArmed = false;
        return result;
    }

    // In the last reading.
    long Calls(int function) const { return m_calls[function]; }

private:
    static bool Fails(int called) {
        FileFaults& self = *s_current;
        if (!self.m_isArmed || ++self.m_calls[called] != self.m_failing || self.m_function != called)
            return false;
        SetLastError(self.m_error);
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
        if (self.m_isArmed && self.beforeRead) {
            self.m_isArmed = false;
            self.beforeRead(self.m_calls[Read] + 1);
            self.m_isArmed = true;
        }
        if (Fails(Read)) {
            *done = 0;
            return self.m_error == ERROR_SUCCESS;
        }
        if (self.m_isArmed && self.longestRead != 0 && count > self.longestRead) count = self.longestRead;
        return self.m_read.Original<decltype(&ReadFile)>()(file, buffer, count, done, position);
    }

    static inline FileFaults* s_current = nullptr;
    bool m_isArmed = false;
    int m_function = Read;
    long m_failing = 0;
    DWORD m_error = ERROR_SUCCESS;
    long m_calls[Read + 1]{};
    const ImportPatch m_create{"kernel32.dll", "CreateFileW", &FakeCreate};
    const ImportPatch m_type{"kernel32.dll", "GetFileType", &FakeType};
    const ImportPatch m_size{"kernel32.dll", "GetFileSizeEx", &FakeSize};
    const ImportPatch m_position{"kernel32.dll", "SetFilePointerEx", &FakePosition};
    const ImportPatch m_read{"kernel32.dll", "ReadFile", &FakeRead};
};
