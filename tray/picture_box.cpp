#include "tray/picture_box.h"

#include <olectl.h>

#include <utility>

#include "platform/com/bstr.h"
#include "platform/com/variant.h"
#include "platform/dpi.h"
#include "platform/icon.h"

namespace {

Variant PropertyOf(IDispatch* object, DISPID property) {
    DISPPARAMS none{};
    Variant value;
    ThrowIfFailed(object->Invoke(property, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                                 value.Receive(), nullptr, nullptr));
    return value;
}

}  // namespace

PictureBox::PictureBox(std::wstring name, int iconResource)
    : DispatchObject(Holder::Server), m_name(std::move(name)), m_iconResource(iconResource) {
    Load();
}

void PictureBox::Load() {
    IconHandle icon = LoadSmallIcon(m_iconResource, TaskbarDpi());
    PICTDESC description{};
    description.cbSizeofstruct = sizeof(description);
    description.picType = PICTYPE_ICON;
    description.icon.hicon = icon.Get();
    ComPtr<IDispatch> picture;
    ThrowIfFailed(OleCreatePictureIndirect(&description, IID_IDispatch, TRUE,
                                           reinterpret_cast<void**>(picture.GetAddressOf())));
    icon.Detach();
    m_picture = picture;
}

STDMETHODIMP PictureBox::get_Name(BSTR* value) {
    return ReturnText(m_name, value);
}

STDMETHODIMP PictureBox::get_Picture(IDispatch** value) {
    if (value == nullptr) return E_POINTER;
    *value = nullptr;
    return ComMethod([&] { ThrowIfFailed(m_picture.CopyTo(value)); });
}

HICON IconOf(IDispatch* pictureBox) {
    if (pictureBox == nullptr) RaiseError(ErrorNumber::ObjectNotSet);
    wchar_t pictureName[] = L"Picture";
    LPOLESTR name = pictureName;
    DISPID pictureId = DISPID_UNKNOWN;
    ThrowIfFailed(pictureBox->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &pictureId));
    const Variant picture = PropertyOf(pictureBox, pictureId);
    if (picture.Value().vt != VT_DISPATCH || picture.Value().pdispVal == nullptr) {
        RaiseError(ErrorNumber::ObjectNotSet);
    }
    const Variant handle = PropertyOf(picture.Value().pdispVal, DISPID_VALUE);
    return static_cast<HICON>(LongToHandle(ToLong(handle)));
}
