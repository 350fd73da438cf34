#include "tests/support/settings_model.h"

#include <oleauto.h>

#include "tests/support/first_run_defaults.h"

namespace {

constexpr const wchar_t* kPauseKeys[] = {L"Alt", L"Ctrl", L"Shift", L"F6", L"F7", L"F8", L"F9", L"F10"};

std::wstring Wide(const std::string& bytes) {
    const int length = static_cast<int>(bytes.size());
    std::wstring text(bytes.size(), L'\0');
    const int count = MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, text.data(), length);
    text.resize(static_cast<size_t>(count));
    return text;
}

std::string Ansi(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    std::string bytes(text.size() * 4, '\0');
    const int count = WideCharToMultiByte(CP_ACP, 0, text.data(), length, bytes.data(),
                                          static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<size_t>(count));
    return bytes;
}

// What oleaut32 reads from, and does not write to.
OLECHAR* Chars(const std::wstring& text) {
    return const_cast<OLECHAR*>(text.c_str());
}

std::wstring UpToNul(const std::wstring& text) {
    return text.substr(0, text.find(L'\0'));
}

void ClickPlaySound(WindowState& window);

void ClickBeep(WindowState& window) {
    if (window.beep == 1 && window.playSound == 1) {
        window.playSound = 0;
        ClickPlaySound(window);
    }
    if (!window.isLoading) window.canApply = true;
}

void ClickPlaySound(WindowState& window) {
    if (window.playSound == 1) {
        window.canChooseSound = true;
        if (!window.soundFile.empty()) window.canTestSound = true;
        if (window.beep == 1) {
            window.beep = 0;
            ClickBeep(window);
        }
    } else {
        window.canChooseSound = false;
        window.canTestSound = false;
    }
    if (!window.isLoading) window.canApply = true;
}

void SetCheck(short& box, short value, WindowState& window, void (*click)(WindowState&)) {
    if ((value != 0 && value != 1) || value == box) return;
    box = value;
    if (click != nullptr) click(window);
}

}  // namespace

std::wstring SettingsModel::TextIn(const Value& value) {
    return value.isNumber ? std::to_wstring(value.number) : value.text;
}

bool SettingsModel::LongIn(const Value& value, long& number) {
    number = value.number;
    return value.isNumber || SUCCEEDED(VarI4FromStr(Chars(value.text), LOCALE_USER_DEFAULT, 0, &number));
}

SettingsModel::ReadResult SettingsModel::ReadFrom(const std::string& key, const std::string& name,
                                                  Value& value) {
    const bool opens = !m_counter.Fails(RegistryFunction::Open);
    const auto found = m_store.find(key);
    if (!opens || found == m_store.end()) return ReadResult::Missing;
    const auto stored = found->second.find(name);
    const bool exists = stored != found->second.end();

    const bool isProbed = !m_counter.Fails(RegistryFunction::Query) && exists;
    const size_t size = isProbed ? stored->second.bytes.size() : 0;
    m_counter.Fails(RegistryFunction::Info);
    const bool isRead =
        !m_counter.Fails(RegistryFunction::Query) && exists && stored->second.bytes.size() <= size;
    if (isRead) m_counter.Fails(RegistryFunction::Close);
    m_counter.Fails(RegistryFunction::Close);
    if (!isRead) return ReadResult::Missing;

    const std::string& bytes = stored->second.bytes;
    if (bytes.empty()) return ReadResult::Read;
    const auto byteAt = [&](size_t index) {
        return static_cast<DWORD>(static_cast<unsigned char>(bytes[index]));
    };
    switch (stored->second.type) {
        case REG_DWORD:
        case REG_DWORD_BIG_ENDIAN: {
            if (bytes.size() < 4) return ReadResult::Unusable;
            const bool isLittle = stored->second.type == REG_DWORD;
            DWORD number = 0;
            for (size_t i = 0; i < 4; ++i)
                number = number * 256 + byteAt(isLittle ? 3 - i : i);
            value = {true, static_cast<long>(number), {}};
            return ReadResult::Read;
        }
        case REG_BINARY:
        case REG_MULTI_SZ:
            value = {false, 0, Wide(bytes)};
            return ReadResult::Read;
        default:
            value = {false, 0, UpToNul(Wide(bytes))};
            return ReadResult::Read;
    }
}

void SettingsModel::Write(const std::string& key, const std::string& name, const std::string& text) {
    if (m_counter.Fails(RegistryFunction::Create)) return;
    StoredKey& stored = m_store[key];
    if (!m_counter.Fails(RegistryFunction::Set)) stored[name] = {REG_SZ, text};
}

bool SettingsModel::Delete(const std::string& key, const std::string& name) {
    const bool opens = !m_counter.Fails(RegistryFunction::Open);
    const auto found = m_store.find(key);
    if (!opens || found == m_store.end()) return false;
    const bool isDeleted = !m_counter.Fails(RegistryFunction::DeleteValue) && found->second.erase(name) != 0;
    m_counter.Fails(RegistryFunction::Close);
    return isDeleted;
}

void SettingsModel::WriteFirstRun(const std::string& serverDirectory) {
    Value firstTime;
    if (ReadFrom(kSettings, "First Time", firstTime) != ReadResult::Missing) return;
    for (const Default& row : FirstRunDefaults(serverDirectory))
        Write(row.key, row.name, row.text);
}

void SettingsModel::LoadRows(const std::string& key, const std::vector<std::string>& fieldsAsRead,
                             Value& value, std::vector<ListRow>& rows) {
    rows.clear();
    for (int n = 1;; ++n) {
        const std::string number = std::to_string(n);
        if (!Read(key, number + "Name", value)) return;
        ListRow row{UpToNul(TextIn(value)), {}, false};
        for (const std::string& field : fieldsAsRead) {
            Read(key, number + field, value);
            row.fields.insert(row.fields.begin(), UpToNul(TextIn(value)));
        }
        const bool hasUse = Read(key, number + "Use", value);
        VARIANT_BOOL isUsed = VARIANT_FALSE;
        if (value.isNumber) {
            row.isUsed = value.number != 0;
        } else if (SUCCEEDED(VarBoolFromStr(Chars(value.text), LOCALE_USER_DEFAULT, 0, &isUsed))) {
            row.isUsed = isUsed != VARIANT_FALSE;
        }
        rows.push_back(row);
        if (!hasUse) return;
    }
}

void SettingsModel::Load(WindowState& window) {
    window.isLoading = true;
    Value value;
    const auto loadCheck = [&](const char* name, short& box, void (*click)(WindowState&)) {
        Read(kSettings, name, value);
        short number = 0;
        const HRESULT result = value.isNumber
                                   ? VarI2FromI4(value.number, &number)
                                   : VarI2FromStr(Chars(value.text), LOCALE_USER_DEFAULT, 0, &number);
        if (SUCCEEDED(result)) SetCheck(box, number, window, click);
    };
    loadCheck("chkPlaySound", window.playSound, ClickPlaySound);
    loadCheck("chkBeep", window.beep, ClickBeep);

    Read(kSettings, "txtSpeed", value);
    long interval = 0;
    if (LongIn(value, interval)) {
        long level = 6;
        for (long candidate = 1; candidate <= 10; ++candidate) {
            if (interval == 2200 - 200 * candidate) level = candidate;
        }
        window.speed = std::to_wstring(level);
    }

    Read(kSettings, "txtPause", value);
    double milliseconds = value.number;
    if (value.isNumber || SUCCEEDED(VarR8FromStr(Chars(value.text), LOCALE_USER_DEFAULT, 0, &milliseconds))) {
        BSTR seconds = nullptr;
        if (SUCCEEDED(VarBstrFromR8(milliseconds / 1000, LOCALE_USER_DEFAULT, 0, &seconds))) {
            window.pause = seconds;
            SysFreeString(seconds);
        }
    }

    window.exclude.clear();
    for (int n = 0; Read(kExclude, std::to_string(n), value); ++n)
        window.exclude.push_back(UpToNul(TextIn(value)));
    LoadRows(kBanners, {"Height", "Width"}, value, window.banners);
    LoadRows(kSearch, {"URL"}, value, window.search);

    loadCheck("chkExtra", window.extra, nullptr);
    Read(kSettings, "txtExtra", value);
    window.extraText = editText(TextIn(value));

    Value mode;
    const ReadResult modeRead = ReadFrom(kSettings, "Startup", mode);
    if (modeRead != ReadResult::Unusable) {
        const std::wstring text = modeRead == ReadResult::Missing ? L"Manual" : TextIn(mode);
        if (text == L"Startup" || text == L"RunOnly" || text == L"Manual") {
            window.mode = text;
            window.selectedMode = text;
        }
    }

    Value pauseKey;
    const ReadResult keyRead = ReadFrom(kSettings, "Pause Key", pauseKey);
    if (keyRead == ReadResult::Missing) pauseKey.text = L"Shift";
    for (const wchar_t* const key : kPauseKeys) {
        if (lstrcmpiW(UpToNul(TextIn(pauseKey)).c_str(), key) == 0) window.pauseKey = key;
    }
    Value sound;
    if (ReadFrom(kSettings, "SoundFile", sound) != ReadResult::Unusable) window.soundFile = TextIn(sound);
    ClickPlaySound(window);
    window.isLoading = false;
}

void SettingsModel::SaveRows(const std::string& key, const std::vector<std::string>& fields,
                             const std::vector<ListRow>& rows) {
    for (int n = 1;; ++n) {
        const std::string number = std::to_string(n);
        Delete(key, number + "Name");
        for (const std::string& field : fields)
            Delete(key, number + field);
        if (!Delete(key, number + "Use")) break;
    }
    int n = 0;
    for (const ListRow& row : rows) {
        const std::string number = std::to_string(++n);
        Write(key, number + "Name", Ansi(row.name));
        for (size_t field = 0; field < fields.size(); ++field)
            Write(key, number + fields[field], Ansi(row.fields[field]));
        Write(key, number + "Use", row.isUsed ? "True" : "False");
    }
}

void SettingsModel::Save(WindowState& window, const std::string& loaderPath) {
    Write(kSettings, "chkPlaySound", std::to_string(window.playSound));
    Write(kSettings, "chkBeep", std::to_string(window.beep));
    long level = 0;
    if (LongIn({false, 0, window.speed}, level)) {
        Write(kSettings, "txtSpeed", std::to_string(level >= 1 && level <= 10 ? 2200 - 200 * level : 1000));
    }
    long seconds = 0;
    if (LongIn({false, 0, window.pause}, seconds) && seconds >= -2147483 && seconds <= 2147483) {
        Write(kSettings, "txtPause", std::to_string(seconds * 1000));
    }
    for (int n = 0; Delete(kExclude, std::to_string(n)); ++n)
        continue;
    for (size_t row = 0; row < window.exclude.size(); ++row)
        Write(kExclude, std::to_string(row), Ansi(window.exclude[row]));
    SaveRows(kBanners, {"Width", "Height"}, window.banners);
    SaveRows(kSearch, {"URL"}, window.search);
    Write(kSettings, "chkExtra", std::to_string(window.extra));
    Write(kSettings, "txtExtra", Ansi(window.extraText));
    Write(kSettings, "SoundFile", Ansi(window.soundFile));
    Write(kSettings, "Pause Key", Ansi(window.pauseKey));
    if (!window.selectedMode.empty() && window.selectedMode != window.mode) {
        Write(kSettings, "Startup", Ansi(window.selectedMode));
        if (window.selectedMode == L"Startup") {
            Write(kRun, kRunEntry, loaderPath);
        } else if (window.mode == L"Startup") {
            Delete(kRun, kRunEntry);
        }
        window.mode = window.selectedMode;
    }
    ClickPlaySound(window);
}
