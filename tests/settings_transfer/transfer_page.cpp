#include "tests/settings_transfer/transfer_page.h"

#include <sstream>
#include <utility>

#include "platform/text.h"
#include "tests/support/other_process.h"

namespace {

// Of "name=text".
std::pair<std::string, std::string> NameAndText(const std::string& row) {
    const size_t end = row.find('=');
    return {row.substr(0, end), row.substr(end + 1)};
}

std::string Flag(bool isSet) {
    return isSet ? "1" : "0";
}

std::string LinesOf(const ListBox& list) {
    std::string lines;
    for (const std::wstring& row : ListBoxRows(list.Hwnd()))
        lines += ToAnsi(row) + '\n';
    return lines;
}

std::string LinesOf(const ListView& list) {
    const int columns = Header_GetItemCount(ListView_GetHeader(list.Hwnd()));
    std::string lines;
    for (int position = 1; position <= list.Count(); ++position) {
        for (int column = 0; column == 0 || column < columns; ++column)
            lines += ToAnsi(list.SubItem(position, column)) + '|';
        if (list.Checked(position)) lines += "x|";
        lines.back() = '\n';
    }
    return lines;
}

void AddRow(ListBox& list, const std::wstring& row) {
    list.AddItem(row);
}

template <class List>
void Fill(List& list, const std::string& lines) {
    list.Clear();
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);)
        AddRow(list, FromAnsi(line));
}

// Without the click that a user's choice raises.
void Choose(HWND combo, const std::wstring& text) {
    const LRESULT item = SendMessageW(combo, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                      reinterpret_cast<LPARAM>(text.c_str()));
    SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(item), 0);
}

std::string Shown(const std::string& text) {
    return '"' + (text.size() > 60 ? text.substr(0, 60) + "..." : text) + '"';
}

}  // namespace

WindowState::WindowState(std::initializer_list<std::string> rows) {
    for (const std::string& row : rows)
        insert(NameAndText(row));
}

WindowState StateOf(const SettingsWindow& window) {
    WindowState state{"m_strSoundFile=" + ToAnsi(window.popupNotice.m_strSoundFile),
                      "m_strStartupMode=" + ToAnsi(window.generalOptions.m_strStartupMode),
                      "m_bLoading=" + Flag(window.changeMark.m_bLoading)};
    for (Control* const control : window.controls) {
        std::string& text = state[ToAnsi(control->Name())];
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
            text = ToAnsi(ShownText(control->Hwnd()));
    }
    return state;
}

void Put(SettingsWindow& window, const WindowState& state) {
    std::vector<std::pair<Control*, bool>> buttons;
    for (const auto& [name, text] : state) {
        const std::wstring wide = FromAnsi(text);
        if (name == "m_strSoundFile") window.popupNotice.m_strSoundFile = wide;
        if (name == "m_strStartupMode") window.generalOptions.m_strStartupMode = wide;
        Control* const control = FindControl(window.controls, FromAnsi(name));
        if (control == nullptr) continue;
        const HWND hwnd = control->Hwnd();
        const ControlKind kind = control->Kind();
        if (kind == ControlKind::CheckBox || kind == ControlKind::OptionButton)
            SettingsWindow::Check(*control, text == "1");
        else if (kind == ControlKind::Button)
            buttons.emplace_back(control, text == "1");
        else if (kind == ControlKind::ComboBox)
            Choose(hwnd, wide);
        else if (kind == ControlKind::ListBox)
            Fill(static_cast<ListBox&>(*control), text);
        else if (kind == ControlKind::ListView)
            Fill(static_cast<ListView&>(*control), text);
        else
            SetWindowTextW(hwnd, wide.c_str());
    }
    // Last, as a change of the others may enable them.
    for (const auto& [button, isEnabled] : buttons)
        button->Enabled(isEnabled);
}

RegistryContents StoreOf(const std::vector<std::string>& rows) {
    RegistryContents store;
    for (const std::string& row : rows) {
        const auto [path, text] = NameAndText(row);
        const size_t end = path.find('\\');
        const std::string key = end == std::string::npos ? "Settings" : path.substr(0, end);
        store["HKCU\\Software\\Calvane\\" + key][path.substr(end + 1)] = Text(text);
    }
    return store;
}

RegistryContents UsualStore() {
    RegistryContents store =
        StoreOf({"chkPlaySound=1", "chkBeep=0", "txtSpeed=400", "txtPause=12000", "chkExtra=1",
                 "txtExtra=a text of an extra box", "Startup=RunOnly", "Pause Key=F9", "First Time=True",
                 "SoundFile=C:\\a folder of sounds\\a.wav"});
    store[kRun] = {{"Calvane Config Manager", Text("C:\\old.exe")}, {"Another", Text("C:\\another.exe")}};
    for (int n = 1; n <= 3; ++n) {
        const std::string number = std::to_string(n);
        const StoredValue use = Text(n == 2 ? "False" : "True");
        store[kExclude][std::to_string(n - 1)] = Text("http://an-excluded-site-" + number);
        store[kBanners].insert({{number + "Name", Text("a size of banners " + number)},
                                {number + "Width", Text(number + "1")},
                                {number + "Height", Text(number + "2")},
                                {number + "Use", use}});
        store[kSearch].insert({{number + "Name", Text("a search engine " + number)},
                               {number + "Url", Text("http://a-search-engine-" + number)},
                               {number + "Use", use}});
    }
    return store;
}

WindowState EditedWindow() {
    return WindowState({"chkPlaySound=0", "chkBeep=1", "chkExtra=0", "txtSpeed=3", "txtPause=17",
                        "txtExtra=typed", "lstExclude=http://x\nhttp://y\n", "lvwBanners=A|1|2|x\nB|3|4|x\n",
                        "lvwSearchURLs=E|http://e|x\nF|http://f\n", "cboPauseKey=Ctrl", "optStartup=0",
                        "optLoadWithKiller=0", "optLoadFromMenu=1", "m_strSoundFile=C:\\b.wav",
                        "m_strStartupMode=Startup", "cmdSoundFile=0", "cmdTestSound=0", "cmdApply=0"});
}

NamedTexts TextsOf(const RegistryContents& store) {
    NamedTexts texts;
    for (const auto& [key, values] : store) {
        for (const auto& [name, value] : values)
            texts[key + '\\' + name] =
                (value.type == REG_SZ ? "" : "type " + std::to_string(value.type) + ' ') + value.bytes;
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
