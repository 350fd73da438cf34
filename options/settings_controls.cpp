#include "options/settings_controls.h"

namespace {

constexpr wchar_t kInitialSpeed[] = L"6";
constexpr wchar_t kInitialPause[] = L"5";
constexpr int kPauseLength = 3;  // characters

}  // namespace

void SettingsControls::SetUp() {
    for (const wchar_t* const key : Schema::kPauseKeys)
        cboPauseKey.AddItem(key);
    txtSpeed.Text(kInitialSpeed);
    txtPause.Text(kInitialPause);
    txtPause.MaxLength(kPauseLength);
}
