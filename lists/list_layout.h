// How a list view is laid out, and how its rows are stored as the numbered entries of a key.
#pragma once

#include <span>

#include "platform/controls/list_view.h"

struct ListColumn {
    const wchar_t* heading;
    int percent;           // of the list's width; what is left over is for the vertical scroll bar
    const wchar_t* field;  // the name of the value, after the number of the entry
};

// The first column is the text of a row, the others are its sub-items. Its check mark is stored in the field
// Schema::kUse. Entries count from 1, as rows do.
struct ListLayout {
    const wchar_t* control;
    const wchar_t* key;
    std::span<const ListColumn> columns;
};

// Adds the columns to a list whose window has just been made.
void AddColumns(ListView& list, const ListLayout& layout);

// Shares the width of the list out to its columns.
void ScaleColumns(ListView& list, const ListLayout& layout);

// The same, and empties the list.
void SetupColumns(ListView& list, const ListLayout& layout);
