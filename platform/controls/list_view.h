#pragma once

#include "platform/controls/control.h"

// A list view in report view with a check box on each row. Rows and columns are addressed by position, from
// 1; the text of a row is its column 1, sub-item n its column n + 1.
class ListView final : public Control {
public:
    ListView(const wchar_t* name, int id) : Control(ControlKind::ListView, name, id) {}

    // Raised when the user ticks or clears the box of a row; not when Checked does.
    Event ItemCheck;

    void AddColumn(const wchar_t* heading);
    // rowImage: the index of the picture that new rows get.
    void SmallIcons(HIMAGELIST images, int rowImage) {
        m_rowImage = rowImage;
        Send(LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(images));
    }

    // Of the whole control, in pixels.
    int Width() const noexcept;
    void ColumnWidth(int column, int pixels) {
        Send(LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(column - 1), pixels);
    }

    int Count() const noexcept { return static_cast<int>(Send(LVM_GETITEMCOUNT)); }
    void Clear() { Send(LVM_DELETEALLITEMS); }

    // Adds a row with an unchecked box at the end and returns its position. Throws AutomationError (5) when
    // the row cannot be added.
    int Add(const std::wstring& text);
    void Remove(int position);

    // Each throws AutomationError (9) for a row that does not exist.
    std::wstring Text(int position) const { return SubItem(position, 0); }
    void Text(int position, const std::wstring& text) { SubItem(position, 0, text); }
    std::wstring SubItem(int position, int subItem) const;
    void SubItem(int position, int subItem, const std::wstring& text);
    bool Checked(int position) const;
    void Checked(int position, bool checked);

    // The position of the selected row; 0 when none is.
    int Selected() const noexcept {
        return static_cast<int>(Send(LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED)) + 1;
    }

    LRESULT OnNotify(const NMHDR& header) override;

protected:
    void OnAttached() override;

private:
    void CheckPosition(int position) const;

    int m_rowImage = I_IMAGENONE;
    bool m_settingCheck = false;
};
