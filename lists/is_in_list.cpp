#include "lists/is_in_list.h"

#include "platform/text.h"

bool IsInList(const std::wstring& text, const ListBox& list) {
    const std::wstring upperText = UpperCase(text);
    const int count = list.ListCount();
    std::wstring row;
    for (int i = 0; i < count; ++i) {
        // Upper case keeps the length.
        if (list.Length(i) != upperText.size()) continue;
        list.List(i, upperText.size(), row);
        MakeUpperCase(row);
        if (row == upperText) return true;
    }
    return false;
}
