#include "standin/engine/engine.h"

#include <shlobj.h>

#include "platform/automation_error.h"
#include "platform/handle.h"
#include "platform/text.h"
#include "standin/engine/popup_object.h"

namespace {

// The DISPIDs of __Popup.
constexpr DISPID kKilledEvent = 1;
constexpr DISPID kPausedEvent = 2;
constexpr DISPID kStartedEvent = 3;
constexpr DISPID kStoppedEvent = 4;

constexpr DWORD kWatchedCharacters = 1024;

// The folder exists for every user, so that a client can make the file where it is missing.
std::wstring DefaultLogFile() {
    PWSTR folder = nullptr;
    const HRESULT result = SHGetKnownFolderPath(FOLDERID_RoamingAppData, 0, nullptr, &folder);
    std::wstring path = SUCCEEDED(result) ? std::wstring(folder) + L"\\Sentrel closed windows.log" : L"";
    CoTaskMemFree(folder);
    ThrowIfFailed(result);
    return path;
}

// "txtSpeed=1000" for the path of a value under HKEY_CURRENT_USER.
std::wstring ReadWatched(const std::wstring& path) {
    const size_t separator = path.find_last_of(L'\\');
    const std::wstring key = separator == std::wstring::npos ? L"" : path.substr(0, separator);
    const std::wstring name = separator == std::wstring::npos ? path : path.substr(separator + 1);

    wchar_t text[kWatchedCharacters] = L"";
    DWORD size = sizeof(text);
    const LSTATUS status =
        RegGetValueW(HKEY_CURRENT_USER, key.c_str(), name.c_str(), RRF_RT_REG_SZ, nullptr, text, &size);
    if (status == ERROR_SUCCESS) return name + L'=' + text;
    return name + (status == ERROR_FILE_NOT_FOUND ? L" missing" : L" unreadable");
}

void AppendLine(const std::wstring& file, const std::wstring& line) {
    const std::string bytes = ToAnsi(line) + "\r\n";
    const FileHandle handle(CreateFileW(file.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                        nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    if (!handle ||
        !WriteFile(handle.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
        ThrowLastError();
    }
}

}  // namespace

Engine::Engine() : logFile(DefaultLogFile()) {}

void Engine::State(long state) {
    m_state = state;
    if (Changed) Changed();
}

void Engine::Reset() {
    calls.Reset();
    logFile = DefaultLogFile();
    watchValue.clear();
    raiseByItself = true;
    State(kRunning);
}

void Engine::Start() {
    State(kRunning);
    if (raiseByItself) RaiseStarted();
}

void Engine::Stop() {
    State(kStopped);
    if (raiseByItself) RaiseStopped();
}

void Engine::Pause() {
    State(kPaused);
    if (raiseByItself) RaisePaused();
}

// The value is read before the call is written down and carried out: it is what the store held on arrival.
void Engine::ReloadSettings() {
    calls.Receive(L"ReloadSettings", watchValue.empty() ? L"" : ReadWatched(watchValue));
}

void Engine::RaiseKilled(long hwnd, const std::wstring& caption) {
    Raise(kKilledEvent, {Variant(hwnd), Variant(caption)});
}

void Engine::RaisePaused() {
    Raise(kPausedEvent);
}

void Engine::RaiseStarted() {
    Raise(kStartedEvent);
}

void Engine::RaiseStopped() {
    Raise(kStoppedEvent);
}

void Engine::ClosePopup(long hwnd, const std::wstring& address) {
    AppendLine(logFile, address);
    RaiseKilled(hwnd, address);
}

size_t Engine::ConnectionCount() const {
    size_t count = 0;
    for (const PopupObject* const popup : m_popups)
        count += popup->ConnectionCount();
    return count;
}

void Engine::Raise(DISPID event, const std::vector<Variant>& arguments) {
    // A client may let go of its engine object while it is called.
    const std::vector<ComPtr<PopupObject>> popups(m_popups.begin(), m_popups.end());
    for (const auto& popup : popups)
        popup->Raise(event, arguments);
}
