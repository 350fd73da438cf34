#pragma once

#include <ocidl.h>

#include <initializer_list>

#include "platform/com/com_ptr.h"
#include "platform/controls/control.h"

// A picture that can be clicked, on a static control with SS_NOTIFY. It cannot have the focus: what its click
// does must be within the keyboard's reach elsewhere.
class ImageBox final : public Control {
public:
    // An RCDATA resource with a picture (GIF, JPEG or bitmap) that was drawn for this resolution.
    struct Resource {
        int dpi;
        int id;
    };

    ImageBox(const wchar_t* name, int id) : Control(ControlKind::Image, name, id) {}

    // Raised when the user clicks the picture.
    Event Click;

    // Shows a picture, which is decoded when it is first drawn; one that cannot be decoded is not drawn.
    // Throws AutomationError when there is no such resource; the previous picture stays.
    void Picture(int resourceId);

    // The one drawn for the screen's resolution, or else for the next higher, or else for the highest.
    void Picture(std::initializer_list<Resource> resources);

    void OnCommand(WORD code) override {
        if (code == STN_CLICKED) Raise(Click);
    }

protected:
    void OnAttached() override;

private:
    static LRESULT CALLBACK Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                      DWORD_PTR self);
    void Draw(HDC dc);

    HRSRC m_resource = nullptr;  // of a picture that is still to be decoded
    ComPtr<IPicture> m_picture;
};

// Where a picture of this size goes in a box of that size: centred, in its own size where it nearly fills the
// box, otherwise as large as its proportions allow.
RECT PictureBounds(SIZE picture, SIZE box);

// The resource of the list that suits this resolution; the list is not empty.
int ResourceForDpi(std::initializer_list<ImageBox::Resource> resources, int dpi);
