#include "tools/schema_export/schema_page.h"

#include "store/settings_schema.h"
#include "tools/schema_export/text_file.h"

namespace {

std::string Code(const std::string& text) {
    return "`" + text + "`";
}

std::string StoredForm(const Option& option) {
    switch (option.form) {
        case OptionForm::Mark:
            return "any text";
        case OptionForm::Digit:
            return "`0` or `1`";
        case OptionForm::Flag:
            return "`True` or `False`";
        case OptionForm::Number:
            return "decimal digits; the window offers " + std::to_string(option.least) + " to " +
                   std::to_string(option.most);
        case OptionForm::OneOf: {
            std::string text;
            for (const OptionChoice& choice : option.choices)
                text += (text.empty() ? "one of " : ", ") + Code(choice.text);
            return text;
        }
        case OptionForm::FilePath:
            return "a full path";
    }
    return {};
}

void WriteOptions(TextFile& page, const std::vector<Option>& options) {
    page.Line("## " + Code(Plain(Schema::kSettingsKey)));
    page.Line();
    page.Line(
        "The values in the order in which the first start writes them; the lists come before the last "
        "three.");
    page.Line();
    page.Line("| value | meaning | stored as | first start |");
    page.Line("|---|---|---|---|");
    for (const Option& option : options) {
        const std::string fallback =
            (option.isInServerDirectory ? "the manager's folder followed by " : "") + Code(option.fallback);
        page.Line("| " + Code(option.value) + " | " + option.meaning + " | " + StoredForm(option) + " | " +
                  fallback + " |");
    }
    page.Line();
}

void WriteDefaults(TextFile& page, const OptionList& list) {
    if (list.defaults.empty()) {
        page.Line("The first start leaves it as it is: a fresh store has no such key.");
        page.Line();
        return;
    }
    std::string head = "| number |";
    std::string rule = "|---|";
    for (const ListField& field : list.fields) {
        head += " " + Code(field.word) + " |";
        rule += "---|";
    }
    page.Line("The first start writes:");
    page.Line();
    page.Line(head);
    page.Line(rule);
    int number = list.first;
    for (const std::vector<std::string>& entry : list.defaults) {
        std::string row = "| " + std::to_string(number++) + " |";
        for (const std::string& text : entry)
            row += " " + Code(text) + " |";
        page.Line(row);
    }
    page.Line();
}

void WriteList(TextFile& page, const OptionList& list) {
    page.Line("## " + Code(list.key));
    page.Line();
    page.Line(list.meaning);
    page.Line();
    page.Line("| value | meaning |");
    page.Line("|---|---|");
    for (const ListField& field : list.fields)
        page.Line("| " + Code(std::to_string(list.first) + field.word) + ", " +
                  Code(std::to_string(list.first + 1) + field.word) + ", ... | " + field.meaning + " |");
    page.Line();
    WriteDefaults(page, list);
}

}  // namespace

void WriteSchemaPage(const std::vector<Option>& options, const std::vector<OptionList>& lists,
                     const std::wstring& folder) {
    TextFile page;
    page.Line("# The settings in the registry");
    page.Line();
    page.Line("Made by `tools/export_schema.sh` from `store/settings_schema.h`; edit that instead.");
    page.Line();
    page.Line(
        "Everything lies under `HKEY_CURRENT_USER`, except for the last section. Every value is text "
        "(`REG_SZ`),");
    page.Line(
        "also numbers and flags; the manager stores it without a NUL at its end and reads it with or without "
        "one.");
    page.Line("Names are compared without regard to case.");
    page.Line();
    page.Line(
        "A list counts its entries without gaps or leading zeros, the excluded sites from 0, the others from "
        "1. It");
    page.Line(
        "is read until the first entry whose name, or address, is missing, or that has no use; there is no "
        "count.");
    page.Line();
    WriteOptions(page, options);
    for (const OptionList& list : lists)
        WriteList(page, list);
    page.Line("## " + Code(Plain(Schema::kRunKey)));
    page.Line();
    page.Line("Under `HKEY_LOCAL_MACHINE`. Written when the user chooses " +
              Code(Plain(Schema::kStartupMode)) + " and presses Apply or OK, removed when");
    page.Line("the user leaves it; without administrator rights neither happens.");
    page.Line();
    page.Line("| value | data |");
    page.Line("|---|---|");
    page.Line("| " + Code(Plain(Schema::kRunValue)) +
              " | full path of `CalvaneConfigLoader.exe`, without quotes |");
    page.WriteTo(folder + L"\\settings-schema.md");
}
