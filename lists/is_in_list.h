#pragma once

#include <string>

#include "platform/controls/list_box.h"

// True when a row of list equals text in upper case, as a whole and without trimming.
bool IsInList(const std::wstring& text, const ListBox& list);
