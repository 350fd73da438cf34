#include "tools/schema_export/defaults_file.h"

#include "store/settings_schema.h"
#include "tools/schema_export/text_file.h"

namespace {

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

void BeginKey(TextFile& file, const std::string& key) {
    file.Line();
    file.Line("[HKEY_CURRENT_USER\\" + key + "]");
}

void AddValue(TextFile& file, const std::string& name, const std::string& data) {
    file.Line(Quoted(name) + "=" + Quoted(data));
}

}  // namespace

void WriteDefaultsFile(const std::vector<Option>& options, const std::vector<OptionList>& lists,
                       const std::wstring& folder) {
    TextFile file;
    file.Line("Windows Registry Editor Version 5.00");
    file.Line();
    file.Line(
        "; Every option and list of a user, as the manager's first start stores them. Change what is to be");
    file.Line(
        "; otherwise, SoundFile also where Calvane lies in another folder, and import it as that user.");
    BeginKey(file, Plain(Schema::kSettingsKey));
    for (const Option& option : options)
        AddValue(file, option.value, (option.isInServerDirectory ? kUsualFolder : "") + option.fallback);
    for (const OptionList& list : lists) {
        if (list.defaults.empty()) continue;
        BeginKey(file, list.key);
        int number = list.first;
        for (const std::vector<std::string>& entry : list.defaults) {
            for (size_t i = 0; i < entry.size(); ++i)
                AddValue(file, std::to_string(number) + list.fields[i].word, entry[i]);
            ++number;
        }
    }
    file.WriteTo(folder + L"\\calvane-defaults.reg");
}
