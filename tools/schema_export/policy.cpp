#include "tools/schema_export/policy.h"

#include <algorithm>
#include <iterator>

#include "store/settings_schema.h"
#include "tools/schema_export/text_file.h"

namespace {

constexpr char kDefinitions[] = "http://schemas.microsoft.com/GroupPolicy/2006/07/PolicyDefinitions";
constexpr char kSupported[] = "SupportedCalvane";
constexpr char kCategory[] = "Calvane";
constexpr char kRunPolicy[] = "Run";
constexpr int kLongestPath = 259;

std::string Id(std::string name) {
    std::erase(name, ' ');
    return name;
}

std::string String(const std::string& id) {
    return "$(string." + id + ")";
}

std::string HelpOf(const Option& option) {
    const std::string help = option.meaning;
    switch (option.form) {
        case OptionForm::Mark:
            return help +
                   "\n\nEnabled: the mark is set, and the options of this policy hold from the first start "
                   "on. "
                   "Disabled: the mark is removed, and the next start writes the defaults.";
        case OptionForm::Digit:
        case OptionForm::Flag:
            return help + "\n\nEnabled: on. Disabled: off.";
        default:
            return help + "\n\nEnabled: the value given is stored. Disabled: the value is removed.";
    }
}

std::string HelpOf(const OptionList& list) {
    std::string help =
        list.meaning +
        "\n\nEnabled: this list replaces the stored one. Each line is one value: its name and its "
        "data. Names begin with the entry's number, " +
        std::to_string(list.first) + " for the first, without gaps:";
    for (const ListField& field : list.fields)
        help += "\n" + std::to_string(list.first) + field.word + ": " + field.meaning;
    return help + "\n\nDisabled: the list is emptied.";
}

class PolicyWriter {
public:
    PolicyWriter() {
        m_definitions.Open("policyDefinitions",
                           {{"xmlns", kDefinitions}, {"revision", "1.0"}, {"schemaVersion", "1.0"}});
        m_definitions.Open("policyNamespaces");
        m_definitions.Empty("target", {{"prefix", "calvane"}, {"namespace", "Calvane.Policies.Config"}});
        m_definitions.Close();
        m_definitions.Empty("resources", {{"minRequiredRevision", "1.0"}});
        m_definitions.Open("supportedOn");
        m_definitions.Open("definitions");
        m_definitions.Empty("definition", {{"name", kSupported}, {"displayName", String(kSupported)}});
        m_definitions.Close();
        m_definitions.Close();
        m_definitions.Open("categories");
        m_definitions.Empty("category", {{"name", kCategory}, {"displayName", String(kCategory)}});
        m_definitions.Close();
        m_definitions.Open("policies");
        AddString(kSupported, "Windows 7 and later, with Calvane installed");
        AddString(kCategory, "Calvane");
    }

    void Add(const Option& option) {
        const std::string id = Id(option.value);
        const bool isSwitch = option.form == OptionForm::Mark || option.form == OptionForm::Digit ||
                              option.form == OptionForm::Flag;
        Begin("User", id, option.title, HelpOf(option), Plain(Schema::kSettingsKey),
              isSwitch ? option.value : "", !isSwitch);
        switch (option.form) {
            case OptionForm::Mark:
                return EndSwitch("True", "");
            case OptionForm::Digit:
                return EndSwitch("1", "0");
            case OptionForm::Flag:
                return EndSwitch("True", "False");
            case OptionForm::Number:
                return EndNumber(id, option);
            case OptionForm::OneOf:
                return EndChoice(id, option);
            case OptionForm::FilePath:
                return EndPath(id, option.value, option.title);
        }
    }

    // Names are typed in full: a prefix could neither number from 0 nor put a word behind the number.
    void Add(const OptionList& list) {
        Begin("User", list.id, list.title, HelpOf(list), list.key, "", true);
        m_definitions.Open("elements");
        m_definitions.Empty("list", {{"id", list.id}, {"key", list.key}, {"explicitValue", "true"}});
        m_definitions.Close();
        m_definitions.Close();
        m_presentations.push_back({list.id, "listBox", {}, list.title, false});
    }

    void AddRunValue() {
        Begin("Machine", kRunPolicy, "Start the manager with Windows",
              "Starts the manager hidden when a user signs in. Needed where \"How the manager is started\" "
              "is set to "
              "\"Startup\" by policy: then nobody presses Apply, which would write this value.\n\nEnabled: "
              "the full "
              "path of CalvaneConfigLoader.exe is stored, without quotes. Disabled: the value is removed.",
              Plain(Schema::kRunKey), "", true);
        EndPath(kRunPolicy, Plain(Schema::kRunValue), "Full path of CalvaneConfigLoader.exe");
    }

    void WriteTo(const std::wstring& folder) {
        m_definitions.Close();
        m_definitions.Close();
        m_definitions.WriteTo(folder + L"\\calvane.admx");

        XmlFile words;
        words.Open("policyDefinitionResources",
                   {{"xmlns", kDefinitions}, {"revision", "1.0"}, {"schemaVersion", "1.0"}});
        words.Leaf("displayName", {}, "Calvane");
        words.Leaf("description", {}, "Options of the Calvane configuration manager");
        words.Open("resources");
        words.Open("stringTable");
        for (const auto& [id, text] : m_strings)
            words.Leaf("string", {{"id", id}}, text);
        words.Close();
        words.Open("presentationTable");
        for (const Presentation& shown : m_presentations) {
            words.Open("presentation", {{"id", shown.id}});
            XmlAttributes attributes{{"refId", shown.id}};
            attributes.insert(attributes.end(), shown.attributes.begin(), shown.attributes.end());
            if (shown.hasLabelElement) {
                words.Open(shown.control, attributes);
                words.Leaf("label", {}, shown.label);
                words.Close();
            } else {
                words.Leaf(shown.control, attributes, shown.label);
            }
            words.Close();
        }
        words.Close();
        words.Close();
        words.Close();
        words.WriteTo(folder + L"\\en-US\\calvane.adml");
    }

private:
    struct Presentation {
        std::string id;
        std::string control;
        XmlAttributes attributes;
        std::string label;
        bool hasLabelElement;
    };

    void AddString(const std::string& id, const std::string& text) { m_strings.emplace_back(id, text); }

    void Begin(const char* scope, const std::string& id, const std::string& title, const std::string& help,
               const std::string& key, const std::string& value, bool isPresented) {
        XmlAttributes attributes{{"name", id},
                                 {"class", scope},
                                 {"displayName", String(id)},
                                 {"explainText", String(id + "Help")}};
        if (isPresented) attributes.emplace_back("presentation", "$(presentation." + id + ")");
        attributes.emplace_back("key", key);
        if (!value.empty()) attributes.emplace_back("valueName", value);
        m_definitions.Open("policy", attributes);
        m_definitions.Empty("parentCategory", {{"ref", kCategory}});
        m_definitions.Empty("supportedOn", {{"ref", kSupported}});
        AddString(id, title);
        AddString(id + "Help", help);
    }

    void AddText(const char* tag, const std::string& text) {
        m_definitions.Open(tag);
        if (text.empty()) {
            m_definitions.Empty("delete");
        } else {
            m_definitions.Leaf("string", {}, text);
        }
        m_definitions.Close();
    }

    // An empty text removes the value.
    void EndSwitch(const char* on, const char* off) {
        AddText("enabledValue", on);
        AddText("disabledValue", off);
        m_definitions.Close();
    }

    void EndNumber(const std::string& id, const Option& option) {
        m_definitions.Open("elements");
        m_definitions.Empty("decimal", {{"id", id},
                                        {"valueName", option.value},
                                        {"required", "true"},
                                        {"minValue", std::to_string(option.least)},
                                        {"maxValue", std::to_string(option.most)},
                                        {"storeAsText", "true"}});
        m_definitions.Close();
        m_definitions.Close();
        m_presentations.push_back(
            {id,
             "decimalTextBox",
             {{"defaultValue", option.fallback}, {"spinStep", std::to_string(option.step)}},
             option.title,
             false});
    }

    void EndChoice(const std::string& id, const Option& option) {
        m_definitions.Open("elements");
        m_definitions.Open("enum", {{"id", id}, {"valueName", option.value}, {"required", "true"}});
        for (const OptionChoice& choice : option.choices) {
            const std::string choiceId = id + "_" + choice.text;
            m_definitions.Open("item", {{"displayName", String(choiceId)}});
            AddText("value", choice.text);
            m_definitions.Close();
            AddString(choiceId, choice.title);
        }
        m_definitions.Close();
        m_definitions.Close();
        m_definitions.Close();
        const auto usual = std::ranges::find(option.choices, option.fallback, &OptionChoice::text);
        m_presentations.push_back(
            {id,
             "dropdownList",
             {{"noSort", "true"}, {"defaultItem", std::to_string(usual - option.choices.begin())}},
             option.title,
             false});
    }

    void EndPath(const std::string& id, const std::string& value, const std::string& label) {
        m_definitions.Open("elements");
        m_definitions.Empty("text", {{"id", id},
                                     {"valueName", value},
                                     {"required", "true"},
                                     {"maxLength", std::to_string(kLongestPath)}});
        m_definitions.Close();
        m_definitions.Close();
        m_presentations.push_back({id, "textBox", {}, label, true});
    }

    XmlFile m_definitions;
    std::vector<std::pair<std::string, std::string>> m_strings;
    std::vector<Presentation> m_presentations;
};

}  // namespace

void WritePolicy(const std::vector<Option>& options, const std::vector<OptionList>& lists,
                 const std::wstring& folder) {
    PolicyWriter policy;
    for (const Option& option : options)
        policy.Add(option);
    for (const OptionList& list : lists)
        policy.Add(list);
    policy.AddRunValue();
    policy.WriteTo(folder);
}
