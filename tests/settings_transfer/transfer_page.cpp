#include "tests/settings_transfer/transfer_page.h"

#include <sstream>

#include "platform/text.h"
#include "tests/support/first_run_defaults.h"
#include "tests/support/other_process.h"

namespace {

Rows Split(const std::wstring& text, wchar_t end) {
    Rows pieces;
    std::wistringstream stream(text);
    for (std::wstring piece; std::getline(stream, piece, end);)
        pieces.push_back(piece);
    return pieces;
}

std::wstring Flag(bool isSet) {
    return isSet ? L"1" : L"0";
}

std::wstring LinesOf(const ListBox& list) {
    std::wstring lines;
    for (int row = 0; row < list.ListCount(); ++row)
        lines += list.List(row) + L'\n';
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

void PutLines(ListBox& list, const std::wstring& lines) {
    list.Clear();
    for (const std::wstring& row : Split(lines, L'\n'))
        list.AddItem(row);
}

void PutLines(ListView& list, const std::wstring& lines) {
    list.Clear();
    for (const std::wstring& line : Split(lines, L'\n')) {
        Rows cells = Split(line, L'|');
        const bool isChecked = cells.back() == L"x";
        if (isChecked) cells.pop_back();
        const int position = list.Add(list.Count() + 1, cells[0]);
        for (size_t cell = 1; cell < cells.size(); ++cell)
            list.SubItem(position, static_cast<int>(cell), cells[cell]);
        list.Checked(position, isChecked);
    }
}

void PutText(const Control& control, const std::wstring& text) {
    if (control.Kind() == ControlKind::TextBox) {
        SetWindowTextW(control.Hwnd(), text.c_str());
        return;
    }
    SendMessageW(control.Hwnd(), CB_SETCURSEL, static_cast<WPARAM>(-1), 0);
    if (!text.empty())
        SendMessageW(control.Hwnd(), CB_SELECTSTRING, static_cast<WPARAM>(-1),
                     reinterpret_cast<LPARAM>(text.c_str()));
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
        const std::string name = ToAnsi(control->Name());
        switch (control->Kind()) {
            case ControlKind::CheckBox:
            case ControlKind::OptionButton:
                state[name] = Flag(SendMessageW(control->Hwnd(), BM_GETCHECK, 0, 0) == BST_CHECKED);
                break;
            case ControlKind::Button:
                state[name] = Flag(control->Enabled());
                break;
            case ControlKind::TextBox:
            case ControlKind::ComboBox:
                state[name] = ShownText(control->Hwnd());
                break;
            case ControlKind::ListBox:
                state[name] = LinesOf(static_cast<ListBox&>(*control));
                break;
            case ControlKind::ListView:
                state[name] = LinesOf(static_cast<ListView&>(*control));
                break;
            default:
                break;
        }
    }
    return state;
}

void Put(SettingsWindow& window, const WindowState& state) {
    for (const auto& [name, text] : state) {
        Control* const control = FindControl(window.controls, FromAnsi(name));
        if (name == "m_strSoundFile") window.popupNotice.m_strSoundFile = text;
        if (name == "m_strStartupMode") window.generalOptions.m_strStartupMode = text;
        if (control == nullptr) continue;
        switch (control->Kind()) {
            case ControlKind::Button:
                break;
            case ControlKind::ListBox:
                PutLines(static_cast<ListBox&>(*control), text);
                break;
            case ControlKind::ListView:
                PutLines(static_cast<ListView&>(*control), text);
                break;
            case ControlKind::TextBox:
            case ControlKind::ComboBox:
                PutText(*control, text);
                break;
            default:
                SettingsWindow::Check(*control, text == L"1");
                break;
        }
    }
    // Last, as a change of a text marks one.
    for (Button* const button : {&window.cmdApply, &window.cmdSoundFile, &window.cmdTestSound}) {
        const auto found = state.find(ToAnsi(button->Name()));
        if (found != state.end()) button->Enabled(found->second == L"1");
    }
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
    store[kRun] = {{kRunEntry, Text("C:\\old.exe")}, {"Another", Text("C:\\another.exe")}};
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

std::string Difference(const std::wstring& actual, const std::wstring& expected) {
    return actual == expected ? "" : "is " + Shown(actual) + ", not " + Shown(expected) + "; ";
}

std::string Difference(const StoredValue& actual, const StoredValue& expected) {
    if (actual == expected) return {};
    return Difference(FromAnsi(actual.bytes), FromAnsi(expected.bytes)) + "type " +
           std::to_string(actual.type) + "; ";
}
