// A COM enumerator over a snapshot of items.
#pragma once

#include <windows.h>

#include <utility>
#include <vector>

#include "platform/com_ptr.h"

// How an item is kept and handed out: Held owns its references, Copy makes the caller's copy.
template <class Interface, class Held, class Item, Item (*Copy)(const Held&)>
class ComEnumerator final : public Interface {
public:
    explicit ComEnumerator(std::vector<Held> items, size_t position = 0)
        : m_items(std::move(items)), m_position(position) {}

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (!IsEqualIID(id, IID_IUnknown) && !IsEqualIID(id, __uuidof(Interface))) return E_NOINTERFACE;
        *object = static_cast<Interface*>(this);
        AddRef();
        return S_OK;
    }

    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_references)); }

    STDMETHODIMP_(ULONG) Release() override {
        const LONG references = InterlockedDecrement(&m_references);
        if (references == 0) delete this;
        return static_cast<ULONG>(references);
    }

    STDMETHODIMP Next(ULONG count, Item* items, ULONG* fetched) override {
        if (items == nullptr || (fetched == nullptr && count != 1)) return E_POINTER;
        ULONG done = 0;
        while (done < count && m_position < m_items.size())
            items[done++] = Copy(m_items[m_position++]);
        if (fetched != nullptr) *fetched = done;
        return done == count ? S_OK : S_FALSE;
    }

    STDMETHODIMP Skip(ULONG count) override {
        const size_t left = m_items.size() - m_position;
        m_position += count < left ? count : left;
        return count <= left ? S_OK : S_FALSE;
    }

    STDMETHODIMP Reset() override {
        m_position = 0;
        return S_OK;
    }

    STDMETHODIMP Clone(Interface** clone) override {
        if (clone == nullptr) return E_POINTER;
        *clone = new ComEnumerator(m_items, m_position);
        return S_OK;
    }

private:
    ~ComEnumerator() = default;

    LONG m_references = 1;
    const std::vector<Held> m_items;
    size_t m_position;
};
