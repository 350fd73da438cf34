#include "tools/schema_export/option_texts.h"

#include <iterator>
#include <set>
#include <stdexcept>
#include <string_view>

#include "options/list_layouts.h"
#include "options/speed_levels.h"
#include "platform/text.h"
#include "store/settings_schema.h"

namespace {

constexpr int kMillisecondsPerSecond = 1000;
constexpr long kSpeedLevels = 10;

struct OptionText {
    const wchar_t* value;
    OptionForm form;
    bool isRead;
    const char* title;
    const char* meaning;
};

constexpr bool kRead = true;
constexpr bool kNeverRead = false;

constexpr OptionText kOptionTexts[] = {
    {Schema::kBeep, OptionForm::Digit, kRead, "Beep when a window has been closed",
     "Beeps when the engine has closed a window, unless the sound is played."},
    {Schema::kPlaySound, OptionForm::Digit, kRead, "Play a sound when a window has been closed",
     "Plays the sound file when the engine has closed a window."},
    {L"chkStartup", OptionForm::Digit, kNeverRead, "Stored mark chkStartup",
     "Written with the defaults and never read again by the manager."},
    {L"chkStopAds", OptionForm::Flag, kNeverRead, "Stored mark chkStopAds",
     "Written with the defaults and never read by the manager."},
    {L"chkStopPop", OptionForm::Flag, kNeverRead, "Stored mark chkStopPop",
     "Written with the defaults and never read by the manager."},
    {L"chkTray", OptionForm::Digit, kNeverRead, "Stored mark chkTray",
     "Written with the defaults and never read by the manager."},
    {Schema::kPause, OptionForm::Number, kRead, "Pause time",
     "How long a pause lasts, in milliseconds; the window shows seconds."},
    {Schema::kSpeed, OptionForm::OneOf, kRead, "Scanning speed",
     "How often the engine looks for windows to close, in milliseconds; the window shows levels. "
     "Another number counts as level 6."},
    {Schema::kSoundFile, OptionForm::FilePath, kRead, "Sound file",
     "The wave file that is played when the engine has closed a window, with its full path."},
    {Schema::kStartup, OptionForm::OneOf, kRead, "How the manager is started",
     "Who starts the manager. A missing value counts as \"Manual\". \"Startup\" takes effect through the Run "
     "value alone, which is a setting of the machine."},
    {Schema::kPauseKey, OptionForm::OneOf, kRead, "Hot key to pause the engine",
     "The key that pauses the engine. A missing value counts as \"Shift\"."},
    {Schema::kFirstTime, OptionForm::Mark, kRead, "The defaults have been written",
     "Only its presence counts. While it is missing, the next start of the manager writes every default over "
     "what is stored."},
};

constexpr struct {
    const wchar_t* text;
    const char* title;
} kModeTexts[] = {
    {Schema::kStartupMode, "Startup (always available)"},
    {Schema::kRunOnlyMode, "Show in tray only when IE is running"},
    {Schema::kManualMode, "Manual (Load from IE toolbar)"},
};

constexpr struct {
    const wchar_t* key;
    const wchar_t* word;
    const char* meaning;
} kFieldTexts[] = {
    {Schema::kExcludeKey, L"", "an address whose windows are never closed"},
    {Schema::kBannersKey, Schema::kName, "the size's display name"},
    {Schema::kBannersKey, Schema::kWidth, "its width in pixels, in decimal digits"},
    {Schema::kBannersKey, Schema::kHeight, "its height in pixels, in decimal digits"},
    {Schema::kBannersKey, Schema::kUse, "whether it is blocked, \"True\" or \"False\""},
    {Schema::kSearchKey, Schema::kName, "the engine's display name"},
    {Schema::kSearchKey, Schema::kURL, "the search address; the query goes behind its last character"},
    {Schema::kSearchKey, Schema::kUse, "whether it is in use, \"True\" or \"False\""},
};

void AddChoices(Option& option) {
    if (option.value == Plain(Schema::kSpeed)) {
        for (long level = 1; level <= kSpeedLevels; ++level) {
            option.choices.push_back(
                {std::to_string(SpeedToInterval(level)), "Level " + std::to_string(level)});
        }
    } else if (option.value == Plain(Schema::kStartup)) {
        for (const auto& mode : kModeTexts)
            option.choices.push_back({Plain(mode.text), mode.title});
    } else if (option.value == Plain(Schema::kPauseKey)) {
        for (const wchar_t* const key : Schema::kPauseKeys)
            option.choices.push_back({Plain(key), Plain(key)});
    }
}

Option OptionOf(const Schema::Setting& setting) {
    for (const OptionText& text : kOptionTexts) {
        if (std::wstring_view(text.value) != setting.name) continue;
        Option option{.value = Plain(setting.name),
                      .fallback = Plain(setting.text),
                      .isInServerDirectory = setting.isInServerDirectory,
                      .form = text.form,
                      .isRead = text.isRead,
                      .title = text.title,
                      .meaning = text.meaning,
                      .choices = {}};
        AddChoices(option);
        if (option.form == OptionForm::Number) {
            option.least = Schema::kShortestPause * kMillisecondsPerSecond;
            option.most = Schema::kLongestPause * kMillisecondsPerSecond;
            option.step = kMillisecondsPerSecond;
        }
        return option;
    }
    throw std::logic_error("no words for the value " + Plain(setting.name));
}

std::string MeaningOf(const std::string& key, const wchar_t* word) {
    for (const auto& text : kFieldTexts) {
        if (key == Plain(text.key) && std::wstring_view(word) == text.word) return text.meaning;
    }
    throw std::logic_error("no words for the field " + Plain(word) + " in " + key);
}

OptionList List(const wchar_t* key, int first, const char* title, const char* meaning) {
    const std::string path = Plain(key);
    return {.key = path,
            .id = path.substr(path.rfind('\\') + 1),
            .title = title,
            .meaning = meaning,
            .first = first,
            .fields = {},
            .defaults = {}};
}

void AddField(OptionList& list, const wchar_t* word) {
    list.fields.push_back({Plain(word), MeaningOf(list.key, word)});
}

void AddFields(OptionList& list) {
    for (const ListLayout& layout : kListLayouts) {
        if (list.key != Plain(layout.key)) continue;
        for (const ListColumn& column : layout.columns)
            AddField(list, column.field);
        AddField(list, Schema::kUse);
    }
}

std::string FlagText(bool flag) {
    return flag ? "True" : "False";
}

}  // namespace

std::string Plain(const wchar_t* text) {
    return ToAnsi(text);
}

std::vector<Option> Options() {
    std::vector<Option> options;
    for (const Schema::Setting& setting : Schema::kOptionDefaults)
        options.push_back(OptionOf(setting));
    for (const Schema::Setting& setting : Schema::kClosingDefaults)
        options.push_back(OptionOf(setting));
    if (options.size() != std::size(kOptionTexts))
        throw std::logic_error("words for a value that is not stored");
    return options;
}

std::vector<OptionList> OptionLists() {
    OptionList exclude =
        List(Schema::kExcludeKey, 0, "Excluded sites", "The sites whose windows are never closed.");
    AddField(exclude, L"");

    OptionList banners =
        List(Schema::kBannersKey, 1, "Banner sizes", "The sizes of the pictures to be blocked.");
    AddFields(banners);
    for (const Schema::BannerSize& size : Schema::kBannerDefaults) {
        banners.defaults.push_back(
            {Plain(size.name), std::to_string(size.width), std::to_string(size.height), FlagText(size.use)});
    }

    OptionList search =
        List(Schema::kSearchKey, 1, "Search addresses", "The search engines and their addresses.");
    AddFields(search);
    for (const Schema::SearchEngine& engine : Schema::kSearchDefaults)
        search.defaults.push_back({Plain(engine.name), Plain(engine.url), FlagText(engine.use)});

    return {exclude, banners, search};
}
