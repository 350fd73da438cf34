// The engine's window, in which a person does by hand what the engine would do by itself.
#pragma once

#include "platform/controls/button.h"
#include "platform/controls/dialog.h"
#include "platform/controls/label.h"
#include "platform/controls/text_box.h"
#include "standin/engine/engine.h"

class EngineWindow final : public Dialog {
public:
    explicit EngineWindow(Engine& engine);

    // Opens the window, or brings it to the front. While it is open it keeps the process alive.
    void Open();

protected:
    ControlTable Controls() override { return m_controls; }
    bool OnInit() override;
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) override;

private:
    void ShowState();
    void ClosePopup();

    Engine& m_engine;
    Label m_lblState;
    TextBox m_txtAddress;
    Button m_cmdClosePopup;
    Button m_cmdStart;
    Button m_cmdStop;
    Button m_cmdPause;
    Control* const m_controls[6];
};
