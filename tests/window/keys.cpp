#include "tests/window/keys.h"

#include <vector>

namespace {

INPUT InputOf(WORD key, bool released) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
    const bool isExtended =
        key == VK_NEXT || key == VK_PRIOR || key == VK_RIGHT || key == VK_LEFT || key == VK_DOWN;
    input.ki.dwFlags = (released ? KEYEVENTF_KEYUP : 0) | (isExtended ? KEYEVENTF_EXTENDEDKEY : 0);
    return input;
}

}  // namespace

void PressKeys(std::initializer_list<WORD> keys) {
    std::vector<INPUT> inputs;
    for (const WORD key : keys)
        inputs.push_back(InputOf(key, false));
    for (size_t i = keys.size(); i-- > 0;)
        inputs.push_back(InputOf(keys.begin()[i], true));
    SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT));
}
