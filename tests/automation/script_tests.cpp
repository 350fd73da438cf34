// Clients written in script languages, run by the scripting host.
#include <doctest.h>

#include <process.h>

#include "platform/text.h"
#include "tests/support/manager.h"
#include "tests/support/program.h"
#include "tests/support/test_folder.h"

TEST_CASE("clients in script languages reach the manager, share it and end it") {
    // What the script ends with behind its last line, and in no other way.
    constexpr int kDone = 77;
    for (const wchar_t* const script : {L"two_clients.vbs", L"two_clients.js"}) {
        CAPTURE(ToAnsi(script));
        DeleteSettings();
        const std::wstring path = L'"' + DataFile(std::wstring(L"tests\\scripts\\") + script) + L'"';
        CHECK(_wspawnlp(_P_WAIT, L"cscript.exe", L"cscript.exe", L"//nologo", path.c_str(), nullptr) ==
              kDone);
        const bool hasEnded = ProgramEnds(L"SentrelConfig.exe");
        CHECK(hasEnded);
        // The next script needs a manager of its own.
        if (!hasEnded) const Manager left(true);
    }
}
