#include "tests/settings_transfer/usual_store.h"

#include "tests/support/first_run_defaults.h"

RegistryContents UsualStore() {
    RegistryContents store{{kSettings,
                            {{"chkPlaySound", Text("1")},
                             {"chkBeep", Text("0")},
                             {"txtSpeed", Text("400")},
                             {"txtPause", Text("12000")},
                             {"chkExtra", Text("1")},
                             {"txtExtra", Text("a text of an extra box")},
                             {"Startup", Text("RunOnly")},
                             {"Pause Key", Text("F9")},
                             {"SoundFile", Text("C:\\a folder of sounds\\a.wav")},
                             {"First Time", Text("True")}}},
                           {kRun, {{kRunEntry, Text("C:\\old.exe")}, {"Another", Text("C:\\another.exe")}}}};
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
    WindowState state;
    state.beep = 1;
    state.speed = L"3";
    state.pause = L"17";
    state.extraText = L"typed";
    state.exclude = {L"http://x", L"http://y"};
    state.banners = {{L"A", {L"1", L"2"}, true}, {L"B", {L"3", L"4"}, true}};
    state.search = {{L"E", {L"http://e"}, true}, {L"F", {L"http://f"}, false}};
    state.pauseKey = L"Ctrl";
    state.soundFile = L"C:\\b.wav";
    state.selectedMode = L"Manual";
    state.mode = L"Startup";
    return state;
}
