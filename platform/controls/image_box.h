#pragma once

#include <ocidl.h>

#include <initializer_list>

#include "platform/com/com_ptr.h"
#include "platform/controls/control.h"

// A picture that can be clicked, on a static control with SS_NOTIFY. It cannot have the focus: what its click
// does must be within the keyboard's reach elsewhere.
class ImageBox final : public Control {
public:
    // An RCDATA resource with a square picture (GIF, JPEG or bitmap) of this width and height.
    struct Resource {
        int pixels;
        int id;
    };

    ImageBox(const wchar_t* name, int id) : Control(ControlKind::Image, name, id) {}

    // Raised when the user clicks the picture.
    Event Click;

    // Shows a picture, which is decoded when it is first drawn; one that cannot be decoded is not drawn.
    // Throws AutomationError when there is no such resource; the previous picture stays.
    void Picture(int resourceId);

    // The one that suits the size that the control has now.
    void Picture(std::initializer_list<Resource> resources);

    // The largest that fits so many pixels, or else the smallest; the list is not empty.
    static int ResourceFor(std::initializer_list<Resource> resources, int pixels);

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
