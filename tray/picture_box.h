// An invisible picture box: it holds an icon for the tray and hands it out as an Automation picture.
#pragma once

#include <windows.h>

#include <string>

#include "picture_box_interface.h"
#include "platform/com/dispatch_object.h"
#include "tray/type_libraries.h"

class PictureBox final : public DispatchObject<_PictureBox, kFormsTypeLibrary> {
public:
    // Throws AutomationError when the icon resource cannot be loaded.
    PictureBox(std::wstring name, int iconResource);

    // Loads the icon at the size of small icons on the taskbar's monitor. Throws AutomationError when it
    // cannot; the previous picture stays.
    void Load();

    STDMETHODIMP get_Name(BSTR* value) override;
    STDMETHODIMP get_Picture(IDispatch** value) override;

private:
    const std::wstring m_name;
    const int m_iconResource;
    ComPtr<IDispatch> m_picture;
};

// The icon handle of the picture that a picture box shows, asked for as a script would ask: the box's
// Picture, and the default property of that. The handle stays the picture's. Throws AutomationError when
// there is none.
HICON IconOf(IDispatch* pictureBox);
