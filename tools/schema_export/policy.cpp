#include "tools/schema_export/policy.h"

#include <algorithm>

#include "platform/text.h"
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

// What these policies can do and what they cannot, for each of them.
constexpr char kPreference[] =
    "\n\nThis is a preference. Windows writes it when the policy object has changed, not at every refresh, "
    "so "
    "that what a user chooses stays until then; and it stays when the policy no longer applies. A manager "
    "that "
    "runs has read its options already, and writes them over this one when its user next presses OK or "
    "Apply.";

std::string HelpOf(const Option& option) {
    std::string help = option.meaning;
    switch (option.form) {
        case OptionForm::Mark:
            help +=
                "\n\nEnabled: the mark is set, and no defaults are written: set every option and both lists "
                "with it. Disabled: the mark is removed, and the next start writes the defaults. Not "
                "configured: "
                "the first start writes the defaults over every option and list but the excluded sites.";
            break;
        case OptionForm::Digit:
        case OptionForm::Flag:
            help += "\n\nEnabled: on. Disabled: off.";
            break;
        default:
            help += "\n\nEnabled: the value given is stored. Disabled: the value is removed.";
    }
    return help + kPreference;
}

std::string HelpOf(const OptionList& list) {
    std::string help =
        list.meaning +
        "\n\nEnabled: this list replaces the stored one. Each line is one value: its name and its "
        "data. Names begin with the entry's number, " +
        std::to_string(list.first) + " for the first, without gaps:";
    for (const ListField& field : list.fields)
        help += "\n" + std::to_string(list.first) + field.word + ": " + field.meaning;
    return help + "\n\nDisabled: the list is emptied." + kPreference;
}

// What tells two policy files apart.
struct PolicyFile {
    const char* name;  // of the files, without .admx and .adml
    const char* space;
    const char* category;
    const char* description;
};

constexpr PolicyFile kOptionsFile{"calvane", "Calvane.Policies.Config", "Calvane",
                                  "Options of the Calvane configuration manager"};
constexpr PolicyFile kStartupFile{"calvane-startup", "Calvane.Policies.Startup", "Calvane start with Windows",
                                  "Start of the Calvane configuration manager with Windows"};

class PolicyWriter {
public:
    explicit PolicyWriter(const PolicyFile& file) : m_file(file) {
        m_definitions.Open("policyDefinitions",
                           {{"xmlns", kDefinitions}, {"revision", "1.0"}, {"schemaVersion", "1.0"}});
        m_definitions.Open("policyNamespaces");
        m_definitions.Empty("target", {{"prefix", "calvane"}, {"namespace", file.space}});
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
        AddString(kCategory, file.category);
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

    // In quotes, unlike the manager's own value: unquoted, Windows would try C:\Program.exe first.
    void AddRunValue() {
        Begin(
            "Machine", kRunPolicy, "Start the manager with Windows",
            "Starts the manager hidden whenever somebody signs in, whatever \"How the manager is started\" "
            "says.\n\nEnabled: the loader's full path is stored, in quotes as proposed. Disabled: the value "
            "is "
            "removed.\n\nThis is a preference: it stays when the policy no longer applies. Calvane's removal "
            "takes it away.",
            Plain(Schema::kRunKey), "", true);
        EndPath(kRunPolicy, Plain(Schema::kRunValue), "Full path of CalvaneConfigLoader.exe, in quotes",
                "\"" + std::string(kUsualFolder) + "\\CalvaneConfigLoader.exe\"");
    }

    void WriteTo(const std::wstring& folder) {
        m_definitions.Close();
        m_definitions.Close();
        m_definitions.WriteTo(folder + L"\\" + FileName(L".admx"));

        XmlFile words;
        words.Open("policyDefinitionResources",
                   {{"xmlns", kDefinitions}, {"revision", "1.0"}, {"schemaVersion", "1.0"}});
        words.Leaf("displayName", {}, m_file.category);
        words.Leaf("description", {}, m_file.description);
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
                if (!shown.proposal.empty()) words.Leaf("defaultValue", {}, shown.proposal);
                words.Close();
            } else {
                words.Leaf(shown.control, attributes, shown.label);
            }
            words.Close();
        }
        words.Close();
        words.Close();
        words.Close();
        words.WriteTo(folder + L"\\en-US\\" + FileName(L".adml"));
    }

private:
    struct Presentation {
        std::string id;
        std::string control;
        XmlAttributes attributes;
        std::string label;
        bool hasLabelElement;
        std::string proposal = {};  // what a text box holds at first
    };

    std::wstring FileName(const wchar_t* extension) const { return FromAnsi(m_file.name) + extension; }

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

    void EndPath(const std::string& id, const std::string& value, const std::string& label,
                 const std::string& proposal = {}) {
        m_definitions.Open("elements");
        m_definitions.Empty("text", {{"id", id},
                                     {"valueName", value},
                                     {"required", "true"},
                                     {"maxLength", std::to_string(kLongestPath)}});
        m_definitions.Close();
        m_definitions.Close();
        m_presentations.push_back({id, "textBox", {}, label, true, proposal});
    }

    const PolicyFile m_file;
    XmlFile m_definitions;
    std::vector<std::pair<std::string, std::string>> m_strings;
    std::vector<Presentation> m_presentations;
};

}  // namespace

void WritePolicy(const std::vector<Option>& options, const std::vector<OptionList>& lists,
                 const std::wstring& folder) {
    PolicyWriter policy(kOptionsFile);
    for (const Option& option : options) {
        if (option.isRead) policy.Add(option);
    }
    for (const OptionList& list : lists)
        policy.Add(list);
    policy.WriteTo(folder);

    PolicyWriter startup(kStartupFile);
    startup.AddRunValue();
    startup.WriteTo(folder);
}
