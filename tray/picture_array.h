// An Automation array of pictures: references to picture boxes under consecutive numbers.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include "platform/com/com_ptr.h"

class PictureArray {
public:
    // Holds nothing and has no bounds.
    PictureArray() noexcept = default;

    // lowerBound to upperBound, all slots empty. Throws AutomationError when it cannot be had.
    PictureArray(LONG lowerBound, LONG upperBound);

    // The same bounds and references as pictures. Throws AutomationError: 9 for an array without bounds or of
    // several dimensions, 13 for one of anything but objects.
    explicit PictureArray(SAFEARRAY* pictures);

    PictureArray(PictureArray&& other) noexcept;
    PictureArray& operator=(PictureArray&& other) noexcept;  // other goes with what this held
    PictureArray(const PictureArray&) = delete;
    PictureArray& operator=(const PictureArray&) = delete;
    ~PictureArray() { Clear(); }

    // Releases every reference, lower bound to upper bound, and forgets the bounds.
    void Clear() noexcept;

    // Each throws AutomationError (9) outside the bounds, and everywhere in an array without any.
    LONG UpperBound() const;
    ComPtr<IDispatch> Item(LONG index) const;
    void Item(LONG index, IDispatch* picture);

    // For calls that take such an array by reference; it stays this object's.
    SAFEARRAY** Reference() noexcept { return &m_pictures; }

private:
    SAFEARRAY* m_pictures = nullptr;
};
