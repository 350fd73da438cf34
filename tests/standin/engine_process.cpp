#include "tests/standin/engine_process.h"

std::wstring TakeText(BSTR text) {
    std::wstring copy = text == nullptr ? L"" : std::wstring(text, SysStringLen(text));
    SysFreeString(text);
    return copy;
}

ComPtr<_Popup> CreatePopup() {
    long mode = 2;
    ComPtr<_Popup> popup;
    REQUIRE(Create<_SentrelApp>(CLSID_SentrelApp)->CreatePopup(1234, 5678, &mode, &popup) == S_OK);
    REQUIRE(popup);
    return popup;
}

ComPtr<_Control>& KeptEngine() {
    static ComPtr<_Control> control;
    return control;
}

void EndEngine() {
    if (KeptEngine()) KeptEngine()->Quit();
    KeptEngine().Reset();
    REQUIRE(EngineEnds());
}

EngineProcess::EngineProcess() {
    if (!KeptEngine()) KeptEngine() = Create<_Control>(CLSID_Control);
    control = KeptEngine();
    REQUIRE(control->Reset() == S_OK);
}

std::wstring EngineProcess::Calls() const {
    BSTR text = nullptr;
    CHECK(control->get_Calls(&text) == S_OK);
    return TakeText(text);
}

std::wstring EngineProcess::LogFile() const {
    BSTR text = nullptr;
    CHECK(control->get_LogFile(&text) == S_OK);
    return TakeText(text);
}

long EngineProcess::State() const {
    long state = 0;
    CHECK(control->get_State(&state) == S_OK);
    return state;
}

EventLog::EventLog(IUnknown* popup)
    : connection(popup, DIID___Popup,
                 {{1, [this](const DISPPARAMS& arguments) { Killed(arguments); }},
                  {2, [this](const DISPPARAMS&) { events.push_back(L"Paused"); }},
                  {3, [this](const DISPPARAMS&) { events.push_back(L"Started"); }},
                  {4, [this](const DISPPARAMS&) { events.push_back(L"Stopped"); }}}) {}

void EventLog::Killed(const DISPPARAMS& arguments) {
    REQUIRE(arguments.cArgs == 2);
    CHECK(arguments.rgvarg[1].vt == VT_I4);
    CHECK(arguments.rgvarg[0].vt == VT_BSTR);
    events.push_back(L"Killed " + std::to_wstring(arguments.rgvarg[1].lVal) + L' ' +
                     ToText(arguments.rgvarg[0]));
}

std::span<const Member> Members() {
    static const Member kMembers[] = {
        {L"CreatePopup",
         [](_SentrelApp& app, _Popup&) {
             long mode = 2;
             ComPtr<_Popup> popup;
             return app.CreatePopup(1, 2, &mode, &popup);
         }},
        {L"ReleasePopup", [](_SentrelApp& app, _Popup&) { return app.ReleasePopup(1, 2); }},
        {L"State",
         [](_SentrelApp&, _Popup& popup) {
             long state = 0;
             return popup.get_State(&state);
         }},
        {L"Start", [](_SentrelApp&, _Popup& popup) { return popup.Start(); }},
        {L"Stop", [](_SentrelApp&, _Popup& popup) { return popup.Stop(); }},
        {L"Pause", [](_SentrelApp&, _Popup& popup) { return popup.Pause(); }},
        {L"ReloadSettings", [](_SentrelApp&, _Popup& popup) { return popup.ReloadSettings(); }},
        {L"LogFile",
         [](_SentrelApp&, _Popup& popup) {
             BSTR text = nullptr;
             const HRESULT result = popup.get_LogFile(&text);
             SysFreeString(text);
             return result;
         }},
    };
    return kMembers;
}
