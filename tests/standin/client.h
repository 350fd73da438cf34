// A client of the stand-in engine.
#pragma once

#include <doctest.h>

#include <string>

#include "platform/com/event_connection.h"
#include "sentrel1.h"
#include "tests/engine/stand_in.h"
#include "tests/support/program.h"
#include "tests/support/shown_text.h"

// An engine as if it were new, and the objects that a client has of it. It must have been registered before.
struct Client : StandIn {
    static ComPtr<_SentrelApp> NewApp() {
        ComPtr<_SentrelApp> app;
        CHECK(CoCreateInstance(__uuidof(SentrelApp), nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&app)) ==
              S_OK);
        REQUIRE(app);
        return app;
    }

    static ComPtr<_Popup> NewPopup() {
        long mode = 2;
        ComPtr<_Popup> popup;
        CHECK(NewApp()->CreatePopup(1234, 5678, &mode, &popup) == S_OK);
        REQUIRE(popup);
        return popup;
    }

    ComPtr<_SentrelApp> app = NewApp();
    ComPtr<_Popup> popup = NewPopup();
};

// Writes down the events of an engine object, each as a word and its arguments.
struct EventLog {
    explicit EventLog(IUnknown* popup)
        : connection(popup, __uuidof(__Popup),
                     {{1,
                       [this](const DISPPARAMS& arguments) {
                           REQUIRE(arguments.cArgs == 2);
                           CHECK(arguments.rgvarg[1].vt == VT_I4);
                           CHECK(arguments.rgvarg[0].vt == VT_BSTR);
                           events.push_back(L"Killed " + ToText(arguments.rgvarg[1]) + L' ' +
                                            ToText(arguments.rgvarg[0]));
                       }},
                      {2, [this](const DISPPARAMS&) { events.push_back(L"Paused"); }},
                      {3, [this](const DISPPARAMS&) { events.push_back(L"Started"); }},
                      {4, [this](const DISPPARAMS&) { events.push_back(L"Stopped"); }}}) {}

    Lines events;
    EventConnection connection;
};
