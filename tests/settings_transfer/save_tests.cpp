// What a load and a save read and write, in which order, and what a save leaves in the store.
#include <functional>
#include <string>
#include <vector>

#include "tests/settings_transfer/transfer_page.h"

namespace {

struct SavePage : TransferPage {
    // What is read, written and deleted, one behind the other.
    std::string Sequence(const std::function<void()>& body) {
        registry.Watch(body);
        std::string sequence;
        for (const std::string& line : registry.Values())
            sequence += line + "; ";
        return sequence;
    }
};

}  // namespace

TEST_CASE_FIXTURE(SavePage, "a load reads the controls in their order, each list to its end, then the rest") {
    registry.contents =
        StoreOf({"Startup=Manual", "Exclude\\0=http://a", "Exclude\\1=http://b", "Banners\\1Name=Full",
                 "Banners\\1Width=468", "Banners\\1Height=60", "Banners\\1Use=True", "Search\\1Name=One",
                 "Search\\1Url=http://one", "Search\\1Use=False"});
    CHECK(Sequence([this] { transfer.LoadSettings(); }) ==
          "read Settings\\chkPlaySound (missing); read Settings\\chkBeep (missing); "
          "read Settings\\txtSpeed (missing); read Settings\\txtPause (missing); read Exclude\\0; "
          "read Exclude\\1; read Exclude\\2 (missing); read Banners\\1Name; read Banners\\1Height; "
          "read Banners\\1Width; read Banners\\1Use; read Banners\\2Name (missing); read Search\\1Name; "
          "read Search\\1URL; read Search\\1Use; read Search\\2Name (missing); "
          "read Settings\\chkExtra (missing); read Settings\\txtExtra (missing); read Settings\\Startup; "
          "read Settings\\Pause Key (missing); read Settings\\SoundFile (missing); ");
}

TEST_CASE_FIXTURE(
    SavePage,
    "a save writes the controls in their order as text, each list deleted and rewritten in one visit, "
    "then the rest") {
    registry.contents =
        StoreOf({"Exclude\\0=http://old", "Exclude\\1=http://older", "Banners\\1Name=Full",
                 "Banners\\1Width=468", "Banners\\1Height=60", "Banners\\1Use=True", "Banners\\2Name=Half",
                 "Banners\\2Width=234", "Banners\\2Height=60", "Banners\\2Use=False", "Search\\1Name=One",
                 "Search\\1Url=http://one", "Search\\1Use=True"});
    Put(*this, WindowState({"chkPlaySound=1", "txtSpeed=10", "txtPause=12", "lstExclude=http://new\n",
                            "lvwBanners=Half|234|60\n", "chkExtra=1", "txtExtra= some text ",
                            "lvwSearchURLs=One|http://one|x\nTwo|http://two\n", "m_strSoundFile=C:\\a.wav",
                            "cboPauseKey=F7", "optStartup=1", "m_strStartupMode=Manual"}));
    CHECK(Sequence([this] { transfer.SaveSettings(); }) ==
          "write Settings\\chkPlaySound=1; write Settings\\chkBeep=0; write Settings\\txtSpeed=200; "
          "write Settings\\txtPause=12000; delete Exclude\\0; delete Exclude\\1; "
          "delete Exclude\\2 (missing); write Exclude\\0=http://new; delete Banners\\1Name; "
          "delete Banners\\1Width; delete Banners\\1Height; delete Banners\\1Use; delete Banners\\2Name; "
          "delete Banners\\2Width; delete Banners\\2Height; delete Banners\\2Use; "
          "delete Banners\\3Name (missing); delete Banners\\3Width (missing); "
          "delete Banners\\3Height (missing); delete Banners\\3Use (missing); write Banners\\1Name=Half; "
          "write Banners\\1Width=234; write Banners\\1Height=60; write Banners\\1Use=False; "
          "delete Search\\1Name; delete Search\\1URL; delete Search\\1Use; "
          "delete Search\\2Name (missing); delete Search\\2URL (missing); delete Search\\2Use (missing); "
          "write Search\\1Name=One; write Search\\1URL=http://one; write Search\\1Use=True; "
          "write Search\\2Name=Two; write Search\\2URL=http://two; write Search\\2Use=False; "
          "write Settings\\chkExtra=1; write Settings\\txtExtra= some text ; "
          "write Settings\\SoundFile=C:\\a.wav; write Settings\\Pause Key=F7; "
          "write Settings\\Startup=Startup; "
          "write Run\\Calvane Config Manager=C:\\Program Files\\Calvane\\CalvaneConfigLoader.exe; ");
}

TEST_CASE_FIXTURE(
    SavePage,
    "a typed level of 11 is saved as 1000, a pause as its whole number; what is none, or too great, is not "
    "written") {
    // What is typed, and what is written of it as a pause and as a speed.
    const std::tuple<std::string, std::string, std::string> rows[] = {{" 7 ", "7000", "800"},
                                                                      {"2.5", "2000", "1800"},
                                                                      {"3.5", "4000", "1400"},
                                                                      {"11", "11000", "1000"},
                                                                      {"-2147483", "-2147483000", "1000"},
                                                                      {"2147483", "2147483000", "1000"},
                                                                      {"2147484", "", "1000"},
                                                                      {"-2147484", "", "1000"},
                                                                      {"2147483648", "", ""},
                                                                      {"", "", ""},
                                                                      {"5 s", "", ""}};
    for (const auto& [text, pause, speed] : rows) {
        CAPTURE(text);
        Put(*this, {"txtPause=" + text, "txtSpeed=" + text});
        registry.contents.clear();
        transfer.SaveSettings();
        CHECK(registry.contents[kSettings]["txtPause"].bytes == pause);
        CHECK(registry.contents[kSettings]["txtSpeed"].bytes == speed);
    }
}

TEST_CASE_FIXTURE(
    SavePage,
    "a list is deleted to its first gap or entry without a use, whether or not it has names; what "
    "is behind stays in the store") {
    Put(*this, {"lstExclude=row 1\nnew\n"});
    registry.contents =
        StoreOf({"Exclude\\0=row 0", "Exclude\\1=row 1", "Exclude\\3=row 3", "Banners\\1Name=1",
                 "Banners\\1Width=1", "Banners\\1Height=1", "Banners\\2Name=2", "Banners\\2Use=2",
                 "Search\\1Use=1", "Search\\2Name=1", "Search\\2URL=1", "Search\\2Use=1"});
    transfer.SaveSettings();
    registry.contents.erase(kSettings);
    CHECK(Difference(registry.contents, StoreOf({"Exclude\\0=row 1", "Exclude\\1=new", "Exclude\\3=row 3",
                                                 "Banners\\2Name=2", "Banners\\2Use=2"})) == "");
}

TEST_CASE_FIXTURE(SavePage,
                  "a save ends with a marked change, sets the sound buttons and leaves the loading flag") {
    transfer.LoadSettings();
    CHECK_FALSE(cmdApply.Enabled());
    cmdTestSound.Enabled(true);
    transfer.SaveSettings();
    CHECK(cmdApply.Enabled());
    CHECK_FALSE(cmdTestSound.Enabled());
    for (const bool loading : {true, false}) {
        changeMark.m_bLoading = loading;
        transfer.SaveSettings();
        CHECK(changeMark.m_bLoading == loading);
    }
}

TEST_CASE_FIXTURE(SavePage,
                  "lists under other names, the log and the link are neither loaded nor stored; without a "
                  "chosen pause key an empty one is") {
    lblNavSite.Caption(L"http://www.calvane.example/");
    Put(*this, {"lstExtra=kept\n", "lvwExtra=kept\n", "lstClosedWnd=http://closed\n"});
    transfer.SaveSettings();
    CHECK(Difference(registry.contents,
                     StoreOf({"chkPlaySound=0", "chkBeep=0", "txtSpeed=1000", "txtPause=5000", "chkExtra=0",
                              "txtExtra=", "SoundFile=", "Pause Key="})) == "");
    transfer.LoadSettings();
    CHECK(StateOf(*this).at("lstExtra") == "kept\n");
    CHECK(StateOf(*this).at("lvwExtra") == "kept\n");
    CHECK(lblNavSite.Caption() == L"http://www.calvane.example/");
}
