// The Banners page on a test window, with the four default rows.
#pragma once

#include <string>
#include <vector>

#include "lists/banner_sizes.h"
#include "lists/frm_add_banner_size.h"
#include "tests/support/dialog_script.h"
#include "tests/support/message_recorder.h"
#include "tests/support/test_window.h"

struct BannerPage : BannerControls {
    BannerPage() {
        SetUp();
        AddRow(L"Full Banner", L"468", L"60", true);
        AddRow(L"Half Banner", L"234", L"60", false);
        AddRow(L"Quarter Banner", L"120", L"60", false);
        AddRow(L"Button", L"88", L"31", false);
    }

    void AddRow(const wchar_t* name, const wchar_t* width, const wchar_t* height, bool use) {
        const int row = lvwBanners.Add(lvwBanners.Count() + 1, name);
        lvwBanners.SubItem(row, 1, width);
        lvwBanners.SubItem(row, 2, height);
        lvwBanners.Checked(row, use);
    }

    // "name|width|height|use"
    std::wstring Row(int position) const {
        return lvwBanners.Text(position) + L'|' + lvwBanners.SubItem(position, 1) + L'|' +
               lvwBanners.SubItem(position, 2) + (lvwBanners.Checked(position) ? L"|True" : L"|False");
    }

    void Add(std::vector<DialogScript::Step> steps) {
        const DialogScript script(std::move(steps));
        Click(cmdAddSize);
    }

    // Enters a size that must be accepted.
    void AddSize(const std::wstring& height, const std::wstring& width) {
        Add({[=](HWND dialog) {
            TypeText(dialog, IDC_ADD_BANNER_SIZE_HEIGHT, height);
            TypeText(dialog, IDC_ADD_BANNER_SIZE_WIDTH, width);
            ClickButton(dialog, IDOK);
        }});
    }

    static void Click(const Control& button) { SendMessageW(button.Hwnd(), BM_CLICK, 0, 0); }

    int changes = 0;
    BannerSizes page{*this, [this] { ++changes; }};
    TestWindow window{Join({all})};
    MessageRecorder recorder;
};
