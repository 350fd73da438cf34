// An invisible picture box: it holds an icon for the tray and hands it out as an Automation picture.
#pragma once

#include <windows.h>

#include <string>

#include "picture_box_interface.h"
#include "platform/com/dispatch_object.h"
#include "tray/type_libraries.h"

class PictureBox final : public DispatchObject<_PictureBox, kFormsTypeLibrary> {
public:
    // Loads the icon resource at the size of the system's small icons. Throws AutomationError when it cannot.
    PictureBox(std::wstring name, int iconResource);

    STDMETHODIMP get_Name(BSTR* value) override;
    STDMETHODIMP get_Picture(IDispatch** value) override;

private:
    const std::wstring m_name;
    ComPtr<IDispatch> m_picture;
};

// The icon handle of the picture that a picture box shows, asked for as a script would ask: the box's
// Picture, and the default property of that. The handle stays the picture's. Throws AutomationError when
// there is none.
HICON IconOf(IDispatch* pictureBox);
