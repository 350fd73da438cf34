// A COM enumerator over a snapshot of items.
#pragma once

#include <windows.h>

#include <utility>
#include <vector>

#include "platform/com/com_method.h"
#include "platform/com/counted_object.h"

// How an item is kept and handed out: Held owns its references, Copy makes the caller's copy.
template <class Interface, class Held, class Item, Item (*Copy)(const Held&)>
class ComEnumerator final : public CountedObject<Interface> {
public:
    explicit ComEnumerator(std::vector<Held> items, size_t position = 0)
        : m_items(std::move(items)), m_position(position) {}

    STDMETHODIMP Next(ULONG count, Item* items, ULONG* fetched) override {
        if (items == nullptr || (fetched == nullptr && count != 1)) return E_POINTER;
        return ComMethod([&] {
            ULONG done = 0;
            while (done < count && m_position < m_items.size())
                items[done++] = Copy(m_items[m_position++]);
            if (fetched != nullptr) *fetched = done;
            return done == count ? S_OK : S_FALSE;
        });
    }

    STDMETHODIMP Skip(ULONG count) override {
        return ComMethod([&] {
            const size_t left = m_items.size() - m_position;
            m_position += count < left ? count : left;
            return count <= left ? S_OK : S_FALSE;
        });
    }

    STDMETHODIMP Reset() override {
        return ComMethod([&] { m_position = 0; });
    }

    STDMETHODIMP Clone(Interface** clone) override {
        if (clone == nullptr) return E_POINTER;
        *clone = nullptr;
        return ComMethod([&] { *clone = new ComEnumerator(m_items, m_position); });
    }

private:
    const std::vector<Held> m_items;
    size_t m_position;
};
