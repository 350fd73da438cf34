#include "platform/controls/image_box.h"

#include <ole2.h>
#include <olectl.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "platform/automation_error.h"
#include "platform/guard.h"

namespace {

ComPtr<IStream> StreamOver(const void* data, size_t size) {
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
    if (memory == nullptr) ThrowLastError();
    std::memcpy(GlobalLock(memory), data, size);
    GlobalUnlock(memory);
    ComPtr<IStream> stream;
    const HRESULT result = CreateStreamOnHGlobal(memory, TRUE, &stream);
    if (FAILED(result)) GlobalFree(memory);
    ThrowIfFailed(result);
    return stream;
}

ComPtr<IPicture> Decoded(HRSRC resource) {
    const DWORD size = SizeofResource(nullptr, resource);
    const ComPtr<IStream> stream = StreamOver(LockResource(LoadResource(nullptr, resource)), size);
    ComPtr<IPicture> picture;
    ThrowIfFailed(OleLoadPicture(stream.Get(), static_cast<LONG>(size), TRUE, IID_IPicture,
                                 reinterpret_cast<void**>(picture.GetAddressOf())));
    return picture;
}

SIZE PixelsOf(IPicture* picture) {
    OLE_HANDLE handle = 0;
    BITMAP bitmap{};
    if (FAILED(picture->get_Handle(&handle)) ||
        GetObjectW(ULongToHandle(handle), sizeof(bitmap), &bitmap) == 0) {
        return {};
    }
    return {bitmap.bmWidth, bitmap.bmHeight};
}

}  // namespace

// Scaling by a few pixels would blur the picture and gain nothing: the sizes of dialog units are seldom those
// of a picture.
RECT PictureBounds(SIZE picture, SIZE box) {
    if (picture.cx <= 0 || picture.cy <= 0 || box.cx <= 0 || box.cy <= 0) return {};
    const bool limitedByWidth =
        static_cast<long long>(box.cx) * picture.cy <= static_cast<long long>(box.cy) * picture.cx;
    SIZE size = limitedByWidth
                    ? SIZE{box.cx, std::max(1L, static_cast<LONG>(MulDiv(picture.cy, box.cx, picture.cx)))}
                    : SIZE{std::max(1L, static_cast<LONG>(MulDiv(picture.cx, box.cy, picture.cy))), box.cy};
    if (size.cx >= picture.cx && size.cx < picture.cx + picture.cx / 4) size = picture;
    const LONG left = (box.cx - size.cx) / 2;
    const LONG top = (box.cy - size.cy) / 2;
    return {left, top, left + size.cx, top + size.cy};
}

int ImageBox::ResourceFor(std::initializer_list<Resource> resources, int pixels) {
    const auto rank = [pixels](const Resource& resource) {
        return std::pair(resource.pixels > pixels, std::abs(resource.pixels - pixels));
    };
    return std::min_element(resources.begin(), resources.end(),
                            [&](const auto& a, const auto& b) { return rank(a) < rank(b); })
        ->id;
}

void ImageBox::Picture(std::initializer_list<Resource> resources) {
    RECT box{};
    GetClientRect(Hwnd(), &box);
    Picture(ResourceFor(resources, std::min(box.right, box.bottom)));
}

void ImageBox::Picture(int resourceId) {
    const HRSRC resource = FindResourceW(nullptr, MAKEINTRESOURCEW(resourceId), RT_RCDATA);
    if (resource == nullptr) ThrowLastError();
    m_resource = resource;
    m_picture.Reset();
    InvalidateRect(Hwnd(), nullptr, TRUE);
}

void ImageBox::OnAttached() {
    SetWindowSubclass(Hwnd(), Procedure, 0, reinterpret_cast<DWORD_PTR>(this));
}

// Decoding takes a megabyte of memory and a library of its own, and few look at the picture.
void ImageBox::Draw(HDC dc) {
    RECT box;
    GetClientRect(Hwnd(), &box);
    // What lies behind a static control is asked of its parent, which knows the page's theme.
    const LRESULT brush = SendMessageW(GetParent(Hwnd()), WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc),
                                       reinterpret_cast<LPARAM>(Hwnd()));
    FillRect(dc, &box, brush != 0 ? reinterpret_cast<HBRUSH>(brush) : GetSysColorBrush(COLOR_3DFACE));
    if (const HRSRC resource = std::exchange(m_resource, nullptr)) {
        ResumeNext([&] { m_picture = Decoded(resource); });
    }
    if (!m_picture) return;

    const RECT bounds = PictureBounds(PixelsOf(m_picture.Get()), {box.right, box.bottom});
    OLE_XSIZE_HIMETRIC width = 0;
    OLE_YSIZE_HIMETRIC height = 0;
    m_picture->get_Width(&width);
    m_picture->get_Height(&height);
    const int mode = SetStretchBltMode(dc, HALFTONE);
    POINT origin;
    SetBrushOrgEx(dc, 0, 0, &origin);  // HALFTONE leaves the origin misaligned unless it is set after it
    m_picture->Render(dc, bounds.left, bounds.top, bounds.right - bounds.left, bounds.bottom - bounds.top, 0,
                      height, width, -height, nullptr);
    SetBrushOrgEx(dc, origin.x, origin.y, nullptr);
    SetStretchBltMode(dc, mode);
}

LRESULT CALLBACK ImageBox::Procedure(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                     DWORD_PTR self) {
    switch (message) {
        case WM_NCDESTROY:
            RemoveWindowSubclass(hwnd, Procedure, 0);
            break;

        case WM_SETCURSOR:
            SetCursor(LoadCursorW(nullptr, IDC_HAND));
            return TRUE;

        case WM_ERASEBKGND:
            return TRUE;

        case WM_PAINT: {
            PAINTSTRUCT paint;
            const HDC dc = BeginPaint(hwnd, &paint);
            Guarded([&] { reinterpret_cast<ImageBox*>(self)->Draw(dc); });
            EndPaint(hwnd, &paint);
            return 0;
        }

        case WM_PRINTCLIENT:
            Guarded([&] { reinterpret_cast<ImageBox*>(self)->Draw(reinterpret_cast<HDC>(wParam)); });
            return 0;

        default:
            break;
    }
    return DefSubclassProc(hwnd, message, wParam, lParam);
}
