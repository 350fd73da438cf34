#include "bench/support/bare_store.h"

#include <charconv>
#include <string_view>

#include "store/settings_schema.h"

namespace {

constexpr char kSettings[] = "Software\\Calvane\\Settings";
constexpr char kExclude[] = "Software\\Calvane\\Exclude";
constexpr char kBanners[] = "Software\\Calvane\\Banners";
constexpr char kSearch[] = "Software\\Calvane\\Search";

// A number and a word without memory of its own.
class Name {
public:
    Name(long number, std::string_view word) {
        char* const end = std::to_chars(m_text, m_text + 16, number).ptr;
        end[word.copy(end, word.size())] = '\0';
    }
    operator const char*() const { return m_text; }

private:
    char m_text[32];
};

bool Read(const char* path, const char* name, std::string& text) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, path, 0, KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS | KEY_NOTIFY,
                      &key) != ERROR_SUCCESS) {
        return false;
    }
    BYTE none = 0;
    DWORD type = 0;
    DWORD size = 0;
    RegQueryValueExA(key, name, nullptr, &type, &none, &size);
    char keyClass[512];
    DWORD classLength = 511;
    RegQueryInfoKeyA(key, keyClass, &classLength, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                     nullptr, nullptr, nullptr);
    text.resize(size);
    const bool isRead = RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(text.data()),
                                         &size) == ERROR_SUCCESS;
    if (isRead) RegCloseKey(key);
    RegCloseKey(HKEY_CURRENT_USER);
    return isRead;
}

void Write(const char* path, const char* name, const std::string& text) {
    SECURITY_ATTRIBUTES security{50, nullptr, TRUE};
    char keyClass[] = "";
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, path, 0, keyClass, REG_OPTION_NON_VOLATILE, KEY_SET_VALUE,
                        &security, &key, nullptr) == ERROR_SUCCESS) {
        RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.data()),
                       static_cast<DWORD>(text.size()));
    }
}

bool Delete(const char* path, const char* name) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, path, 0, KEY_SET_VALUE, &key) != ERROR_SUCCESS) return false;
    const bool isDeleted = RegDeleteValueA(key, name) == ERROR_SUCCESS;
    RegCloseKey(key);
    return isDeleted;
}

// The defaults are ASCII.
std::string Plain(std::wstring_view text) {
    return {text.begin(), text.end()};
}

constexpr const char* kOptions[] = {"chkPlaySound", "chkBeep", "txtSpeed", "txtPause"};

}  // namespace

void BareStore::FirstRun(const std::string& folder) {
    std::string text;
    if (Read(kSettings, "First Time", text)) return;
    const auto write = [&](const Schema::Setting& setting) {
        Write(kSettings, Plain(setting.name).c_str(),
              (setting.isInServerDirectory ? folder : std::string()) + Plain(setting.text));
    };
    for (const Schema::Setting& setting : Schema::kOptionDefaults)
        write(setting);
    long n = 0;
    for (const Schema::BannerSize& banner : Schema::kBannerDefaults) {
        ++n;
        Write(kBanners, Name(n, "Name"), Plain(banner.name));
        Write(kBanners, Name(n, "Width"), std::to_string(banner.width));
        Write(kBanners, Name(n, "Height"), std::to_string(banner.height));
        Write(kBanners, Name(n, "Use"), banner.use ? "True" : "False");
    }
    n = 0;
    for (const Schema::SearchEngine& engine : Schema::kSearchDefaults) {
        ++n;
        Write(kSearch, Name(n, "Name"), Plain(engine.name));
        Write(kSearch, Name(n, "Url"), Plain(engine.url));
        Write(kSearch, Name(n, "Use"), engine.use ? "True" : "False");
    }
    for (const Schema::Setting& setting : Schema::kClosingDefaults)
        write(setting);
}

StoredValues BareStore::Load() {
    StoredValues values;
    for (size_t i = 0; i < values.options.size(); ++i)
        Read(kSettings, kOptions[i], values.options[i]);
    std::string text;
    for (long n = 0; Read(kExclude, Name(n, ""), text); ++n)
        values.exclude.push_back(text);
    std::array<std::string, 4> banner;
    for (long i = 1; Read(kBanners, Name(i, "Name"), banner[0]); ++i) {
        Read(kBanners, Name(i, "Height"), banner[2]);
        Read(kBanners, Name(i, "Width"), banner[1]);
        Read(kBanners, Name(i, "Use"), banner[3]);
        values.banners.push_back(banner);
    }
    std::array<std::string, 3> search;
    for (long i = 1; Read(kSearch, Name(i, "Name"), search[0]); ++i) {
        Read(kSearch, Name(i, "URL"), search[1]);
        Read(kSearch, Name(i, "Use"), search[2]);
        values.search.push_back(search);
    }
    Read(kSettings, "Startup", text);
    Read(kSettings, "Pause Key", values.pauseKey);
    Read(kSettings, "SoundFile", values.soundFile);
    return values;
}

void BareStore::Save(const StoredValues& values) {
    for (size_t i = 0; i < values.options.size(); ++i)
        Write(kSettings, kOptions[i], values.options[i]);
    for (long n = 0; Delete(kExclude, Name(n, "")); ++n)
        continue;
    long n = 0;
    for (const std::string& address : values.exclude)
        Write(kExclude, Name(n++, ""), address);

    bool goesOn = true;
    for (long i = 1; goesOn; ++i) {
        for (const char* const field : {"Name", "Width", "Height"})
            Delete(kBanners, Name(i, field));
        goesOn = Delete(kBanners, Name(i, "Use"));
    }
    n = 0;
    for (const auto& banner : values.banners) {
        ++n;
        size_t field = 0;
        for (const char* const word : {"Name", "Width", "Height", "Use"})
            Write(kBanners, Name(n, word), banner[field++]);
    }

    goesOn = true;
    for (long i = 1; goesOn; ++i) {
        for (const char* const field : {"Name", "URL"})
            Delete(kSearch, Name(i, field));
        goesOn = Delete(kSearch, Name(i, "Use"));
    }
    n = 0;
    for (const auto& search : values.search) {
        ++n;
        size_t field = 0;
        for (const char* const word : {"Name", "URL", "Use"})
            Write(kSearch, Name(n, word), search[field++]);
    }
    Write(kSettings, "SoundFile", values.soundFile);
    Write(kSettings, "Pause Key", values.pauseKey);
}
