#include "tests/settings_transfer/transfer_page.h"

#include <sstream>

#include "platform/text.h"
#include "tests/support/other_process.h"
#include "tests/support/settings_keys.h"

namespace {

Rows LinesIn(const std::wstring& text) {
    Rows lines;
    std::wistringstream stream(text);
    for (std::wstring line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::wstring Flag(bool isSet) {
    return isSet ? L"1" : L"0";
}

std::wstring LinesOf(const ListBox& list) {
    std::wstring lines;
    for (const std::wstring& row : ListBoxRows(list.Hwnd()))
        lines += row + L'\n';
    return lines;
}

std::wstring LinesOf(const ListView& list) {
    const int columns = Header_GetItemCount(ListView_GetHeader(list.Hwnd()));
    std::wstring lines;
    for (int position = 1; position <= list.Count(); ++position) {
        lines += list.Text(position);
        for (int column = 1; column < columns; ++column)
            lines += L'|' + list.SubItem(position, column);
        lines += list.Checked(position) ? L"|x\n" : L"\n";
    }
    return lines;
}

void Fill(ListBox& list, const std::wstring& lines) {
    list.Clear();
    for (const std::wstring& line : LinesIn(lines))
        list.AddItem(line);
}

void Fill(ListView& list, const std::wstring& lines) {
    list.Clear();
    for (const std::wstring& line : LinesIn(lines))
        AddRow(list, line);
}

// Without the click that a user's choice raises.
void Choose(HWND combo, const std::wstring& text) {
    const LRESULT item = SendMessageW(combo, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                      reinterpret_cast<LPARAM>(text.c_str()));
    SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(item), 0);
}

std::string Shown(const std::wstring& text) {
    return '"' + ToAnsi(text.size() > 60 ? text.substr(0, 60) + L"..." : text) + '"';
}

}  // namespace

WindowState StateOf(const SettingsWindow& window) {
    WindowState state{{"m_strSoundFile", window.popupNotice.m_strSoundFile},
                      {"m_strStartupMode", window.generalOptions.m_strStartupMode},
                      {"m_bLoading", Flag(window.changeMark.m_bLoading)}};
    for (Control* const control : window.controls) {
        std::wstring& text = state[ToAnsi(control->Name())];
        const ControlKind kind = control->Kind();
        if (kind == ControlKind::CheckBox || kind == ControlKind::OptionButton)
            text = Flag(SendMessageW(control->Hwnd(), BM_GETCHECK, 0, 0) == BST_CHECKED);
        else if (kind == ControlKind::Button)
            text = Flag(control->Enabled());
        else if (kind == ControlKind::ListBox)
            text = LinesOf(static_cast<ListBox&>(*control));
        else if (kind == ControlKind::ListView)
            text = LinesOf(static_cast<ListView&>(*control));
        else
            text = ShownText(control->Hwnd());
    }
    return state;
}

void Put(SettingsWindow& window, const WindowState& state) {
    std::vector<std::pair<Control*, bool>> buttons;
    for (const auto& [name, text] : state) {
        if (name == "m_strSoundFile") window.popupNotice.m_strSoundFile = text;
        if (name == "m_strStartupMode") window.generalOptions.m_strStartupMode = text;
        Control* const control = FindControl(window.controls, FromAnsi(name));
        if (control == nullptr) continue;
        const ControlKind kind = control->Kind();
        if (kind == ControlKind::CheckBox || kind == ControlKind::OptionButton)
            SettingsWindow::Check(*control, text == L"1");
        else if (kind == ControlKind::Button)
            buttons.emplace_back(control, text == L"1");
        else if (kind == ControlKind::ComboBox)
            Choose(control->Hwnd(), text);
        else if (kind == ControlKind::ListBox)
            Fill(static_cast<ListBox&>(*control), text);
        else if (kind == ControlKind::ListView)
            Fill(static_cast<ListView&>(*control), text);
        else
            SetWindowTextW(control->Hwnd(), text.c_str());
    }
    // Last, as a change of the others may enable them.
    for (const auto& [button, isEnabled] : buttons)
        button->Enabled(isEnabled);
}

RegistryContents StoreOf(const std::vector<std::string>& rows) {
    RegistryContents store;
    for (const std::string& row : rows) {
        const size_t name = row.find('\\') + 1;
        const size_t text = row.find('=') + 1;
        store["HKCU\\Software\\Calvane\\" + row.substr(0, name - 1)][row.substr(name, text - 1 - name)] =
            Text(row.substr(text));
    }
    return store;
}

RegistryContents UsualStore() {
    RegistryContents store = StoreOf(
        {"Settings\\chkPlaySound=1", "Settings\\chkBeep=0", "Settings\\txtSpeed=400",
         "Settings\\txtPause=12000", "Settings\\chkExtra=1", "Settings\\txtExtra=a text of an extra box",
         "Settings\\Startup=RunOnly", "Settings\\Pause Key=F9",
         "Settings\\SoundFile=C:\\a folder of sounds\\a.wav", "Settings\\First Time=True"});
    store[kRun] = {{"Calvane Config Manager", Text("C:\\old.exe")}, {"Another", Text("C:\\another.exe")}};
    for (int n = 1; n <= 3; ++n) {
        const std::string number = std::to_string(n);
        const std::string use = n == 2 ? "False" : "True";
        store[kExclude][std::to_string(n - 1)] = Text("http://an-excluded-site-" + number);
        store[kBanners][number + "Name"] = Text("a size of banners " + number);
        store[kBanners][number + "Width"] = Text(number + "1");
        store[kBanners][number + "Height"] = Text(number + "2");
        store[kBanners][number + "Use"] = Text(use);
        store[kSearch][number + "Name"] = Text("a search engine " + number);
        store[kSearch][number + "Url"] = Text("http://a-search-engine-" + number);
        store[kSearch][number + "Use"] = Text(use);
    }
    return store;
}

WindowState EditedWindow() {
    return {{"chkPlaySound", L"0"},
            {"chkBeep", L"1"},
            {"chkExtra", L"0"},
            {"txtSpeed", L"3"},
            {"txtPause", L"17"},
            {"txtExtra", L"typed"},
            {"lstExclude", L"http://x\nhttp://y\n"},
            {"lvwBanners", L"A|1|2|x\nB|3|4|x\n"},
            {"lvwSearchURLs", L"E|http://e|x\nF|http://f\n"},
            {"cboPauseKey", L"Ctrl"},
            {"optStartup", L"0"},
            {"optLoadWithKiller", L"0"},
            {"optLoadFromMenu", L"1"},
            {"m_strSoundFile", L"C:\\b.wav"},
            {"m_strStartupMode", L"Startup"},
            {"cmdSoundFile", L"0"},
            {"cmdTestSound", L"0"},
            {"cmdApply", L"0"}};
}

NamedTexts TextsOf(const RegistryContents& store) {
    NamedTexts texts;
    for (const auto& [key, values] : store) {
        for (const auto& [name, value] : values) {
            std::wstring& text = texts[key + '\\' + name];
            if (value.type != REG_SZ) text = L"type " + std::to_wstring(value.type) + L' ';
            text += FromAnsi(value.bytes);
        }
    }
    return texts;
}

std::string Difference(const NamedTexts& actual, const NamedTexts& expected) {
    std::string text;
    for (const auto& [name, wanted] : expected) {
        const auto found = actual.find(name);
        if (found == actual.end())
            text += name + " is missing; ";
        else if (found->second != wanted)
            text += name + " is " + Shown(found->second) + ", not " + Shown(wanted) + "; ";
    }
    for (const auto& [name, value] : actual) {
        if (!expected.contains(name)) text += name + " is there; ";
    }
    return text;
}
