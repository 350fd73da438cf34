// What a load, a save and the first run must come to, whatever fails in them: written from the rules of the
// store and of the window, apart from the program.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/registry_calls.h"
#include "tests/support/window_state.h"

// Shared by the store and the window of a test.
class SettingsModel {
public:
    explicit SettingsModel(RegistryContents& store, const Fault& fault = {})
        : m_store(store), m_counter(fault) {}

    void WriteFirstRun(const std::string& serverDirectory);
    void Load(WindowState& window);
    void Save(WindowState& window, const std::string& loaderPath);

    // What a text box makes of a text that is set.
    std::function<std::wstring(const std::wstring&)> editText = [](const std::wstring& text) {
        return text.substr(0, text.find(L'\0'));
    };

    long Calls() const noexcept { return m_counter.Calls(); }

private:
    struct Value {
        bool isNumber = false;
        long number = 0;
        std::wstring text;
    };

    enum class ReadResult { Missing, Read, Unusable };

    ReadResult ReadFrom(const std::string& key, const std::string& name, Value& value);
    bool Read(const std::string& key, const std::string& name, Value& value) {
        return ReadFrom(key, name, value) == ReadResult::Read;
    }
    void Write(const std::string& key, const std::string& name, const std::string& text);
    bool Delete(const std::string& key, const std::string& name);
    void LoadRows(const std::string& key, const std::vector<std::string>& fieldsAsRead, Value& value,
                  std::vector<ListRow>& rows);
    void SaveRows(const std::string& key, const std::vector<std::string>& fields,
                  const std::vector<ListRow>& rows);

    static std::wstring TextIn(const Value& value);
    static bool LongIn(const Value& value, long& number);

    RegistryContents& m_store;
    FaultCounter m_counter;
};
