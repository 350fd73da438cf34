#include "tray/picture_array.h"

#include <utility>

#include "platform/automation_error.h"

namespace {

// Out of bounds is DISP_E_BADINDEX here and number 9 in Automation.
void CheckArray(HRESULT result) {
    if (result == DISP_E_BADINDEX || result == E_INVALIDARG) RaiseError(ErrorNumber::SubscriptOutOfRange);
    ThrowIfFailed(result);
}

}  // namespace

PictureArray::PictureArray(LONG lowerBound, LONG upperBound)
    : m_pictures(
          SafeArrayCreateVector(VT_DISPATCH, lowerBound, static_cast<ULONG>(upperBound - lowerBound + 1))) {
    if (m_pictures == nullptr) ThrowIfFailed(E_OUTOFMEMORY);
}

PictureArray::PictureArray(SAFEARRAY* pictures) {
    if (pictures == nullptr || SafeArrayGetDim(pictures) != 1) RaiseError(ErrorNumber::SubscriptOutOfRange);
    VARTYPE type = VT_EMPTY;
    ThrowIfFailed(SafeArrayGetVartype(pictures, &type));
    if (type != VT_DISPATCH) RaiseError(ErrorNumber::TypeMismatch);
    ThrowIfFailed(SafeArrayCopy(pictures, &m_pictures));
}

PictureArray::PictureArray(PictureArray&& other) noexcept
    : m_pictures(std::exchange(other.m_pictures, nullptr)) {}

PictureArray& PictureArray::operator=(PictureArray&& other) noexcept {
    std::swap(m_pictures, other.m_pictures);
    return *this;
}

void PictureArray::Clear() noexcept {
    SAFEARRAY* const pictures = std::exchange(m_pictures, nullptr);
    if (pictures != nullptr) SafeArrayDestroy(pictures);
}

LONG PictureArray::UpperBound() const {
    LONG bound = 0;
    CheckArray(SafeArrayGetUBound(m_pictures, 1, &bound));
    return bound;
}

ComPtr<IDispatch> PictureArray::Item(LONG index) const {
    ComPtr<IDispatch> picture;
    CheckArray(SafeArrayGetElement(m_pictures, &index, picture.GetAddressOf()));
    return picture;
}

void PictureArray::Item(LONG index, IDispatch* picture) {
    CheckArray(SafeArrayPutElement(m_pictures, &index, picture));
}
