// The options of the store as an administrator sees them: the schema's values, with words and forms.
#pragma once

#include <string>
#include <vector>

// What a value's text can be.
enum class OptionForm {
    Mark,      // "True", or not there
    Digit,     // "1" or "0"
    Flag,      // "True" or "False"
    Number,    // between two bounds
    OneOf,     // one of several texts
    FilePath,  // any path
};

struct OptionChoice {
    std::string text;
    std::string title;
};

struct Option {
    std::string value;  // the name of the value
    std::string fallback;
    bool isInServerDirectory;  // fallback is the end of a path that begins with the server's directory
    OptionForm form;
    bool isRead;  // by the manager
    std::string title;
    std::string meaning;                // sentences
    std::vector<OptionChoice> choices;  // OneOf
    int least = 0;                      // Number
    int most = 0;
    int step = 0;
};

// The values of the Settings key, in the schema's order. Throws std::logic_error when a value of the schema
// has no words, or words no value.
std::vector<Option> Options();

struct ListField {
    std::string word;  // stands behind the entry's number; empty where the number is all
    std::string meaning;
};

struct OptionList {
    std::string key;
    std::string id;  // the last part of the key
    std::string title;
    std::string meaning;
    int first;  // the number of the first entry
    std::vector<ListField> fields;
    std::vector<std::vector<std::string>> defaults;  // of each entry, its fields
};

// Throws std::logic_error as Options does.
std::vector<OptionList> OptionLists();

// The schema's names are plain ASCII.
std::string Plain(const wchar_t* text);

// Where the installer puts the manager on 64-bit Windows, when nobody chooses another folder.
inline constexpr char kUsualFolder[] = "C:\\Program Files (x86)\\Calvane";
