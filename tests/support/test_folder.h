// A folder of its own for the files of one test, gone when the test ends.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

class TestFolder {
public:
    TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;
    ~TestFolder();

    std::wstring Path(const std::wstring& name) const { return m_path + L'\\' + name; }
    std::wstring Write(const std::wstring& name, std::string_view bytes) const;  // returns the path
    const std::wstring& Folder() const noexcept { return m_path; }

private:
    std::wstring m_path;
};

// The path of a file of the source tree that was put beside the test programs.
std::wstring DataFile(const std::wstring& path);

bool FileExists(const std::wstring& path);
std::string BytesOf(const std::wstring& path);
void Append(const std::wstring& path, std::string_view bytes);
