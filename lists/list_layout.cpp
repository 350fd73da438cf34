#include "lists/list_layout.h"

void AddColumns(ListView& list, const ListLayout& layout) {
    for (const ListColumn& column : layout.columns)
        list.AddColumn(column.heading);
}

void SetupColumns(ListView& list, const ListLayout& layout) {
    list.Clear();
    ScaleColumns(list, layout);
}

void ScaleColumns(ListView& list, const ListLayout& layout) {
    const int width = list.Width();
    int position = 0;
    for (const ListColumn& column : layout.columns)
        list.ColumnWidth(++position, MulDiv(width, column.percent, 100));
}
