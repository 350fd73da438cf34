#include "tests/support/first_run_defaults.h"

std::vector<Default> FirstRunDefaults(const std::string& serverDirectory) {
    std::vector<Default> defaults{{kSettings, "chkBeep", "0"},
                                  {kSettings, "chkPlaySound", "1"},
                                  {kSettings, "chkStartup", "1"},
                                  {kSettings, "chkStopAds", "True"},
                                  {kSettings, "chkStopPop", "True"},
                                  {kSettings, "chkTray", "1"},
                                  {kSettings, "txtPause", "5000"},
                                  {kSettings, "txtSpeed", "1000"},
                                  {kSettings, "SoundFile", serverDirectory + "\\Arc.wav"}};
    const auto add = [&](const char* key, int n, std::initializer_list<const char*> fields,
                         std::initializer_list<const char*> texts) {
        auto text = texts.begin();
        for (const char* const field : fields)
            defaults.push_back({key, std::to_string(n) + field, *text++});
    };
    const char* const banners[][4] = {{"Full Banner", "468", "60", "True"},
                                      {"Half Banner", "234", "60", "False"},
                                      {"Quarter Banner", "120", "60", "False"},
                                      {"Button", "88", "31", "False"}};
    int n = 0;
    for (const auto& banner : banners)
        add(kBanners, ++n, {"Name", "Width", "Height", "Use"}, {banner[0], banner[1], banner[2], banner[3]});
    const char* const engines[][2] = {
        {"Yahoo", "http://search.yahoo.com/bin/search?p="},
        {"Alta Vista", "http://www.altavista.com/sites/search/web?q="},
        {"MSN", "http://search.msn.com/results.asp?RS=CHECKED&FORM=MSNH&v=1&q="},
        {"Google", "http://www.google.com/search?q="},
        {"Teoma", "http://s.teoma.com/search?q="},
        {"Overture", "http://www.overture.com/d/search/?type=home&tm=1&Keywords="}};
    n = 0;
    for (const auto& engine : engines)
        add(kSearch, ++n, {"Name", "Url", "Use"}, {engine[0], engine[1], "True"});
    defaults.insert(defaults.end(), {{kSettings, "Startup", "RunOnly"},
                                     {kSettings, "Pause Key", "Shift"},
                                     {kSettings, "First Time", "True"}});
    return defaults;
}
