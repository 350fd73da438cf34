#include "tests/engine_control/fake_engine.h"

#include <algorithm>

namespace {

FakeEngine* current = nullptr;

// The members of IDispatch that a dual interface is never called by here.
template <class Interface>
class DualObject : public Interface {
public:
    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++m_references); }
    STDMETHODIMP_(ULONG) Release() override {
        const LONG references = --m_references;
        if (references == 0) delete this;
        return static_cast<ULONG>(references);
    }

protected:
    virtual ~DualObject() = default;

private:
    LONG m_references = 1;
};

}  // namespace

class FakePopup final : public DualObject<_Popup> {
public:
    explicit FakePopup(FakeEngine& engine)
        : m_engine(engine), events(*static_cast<_Popup*>(this), __uuidof(__Popup)) {}
    ~FakePopup() override {
        m_engine.script.Call(events.ConnectionCount() == 0 ? "Popup gone" : "Popup gone with its events");
        m_engine.popup = nullptr;
    }

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        *object = nullptr;
        if (IsEqualIID(id, IID_IConnectionPointContainer)) {
            const HRESULT result = m_engine.script.Call("Advise");
            if (FAILED(result)) return result;
            *object = events.Container();
        } else if (IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDispatch) ||
                   IsEqualIID(id, __uuidof(_Popup))) {
            *object = static_cast<_Popup*>(this);
        } else {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }

    STDMETHODIMP get_State(LONG* value) override {
        *value = m_engine.script.state;
        return m_engine.script.Call("State");
    }
    STDMETHODIMP Start() override { return m_engine.script.Call("Start"); }
    STDMETHODIMP Stop() override { return m_engine.script.Call("Stop"); }
    STDMETHODIMP Pause() override { return m_engine.script.Call("Pause"); }
    STDMETHODIMP ReloadSettings() override { return m_engine.script.Call("ReloadSettings"); }
    STDMETHODIMP get_LogFile(BSTR* value) override {
        *value = nullptr;
        const HRESULT result = m_engine.script.Call("LogFile");
        if (SUCCEEDED(result)) *value = SysAllocString(m_engine.script.logFile.c_str());
        return result;
    }

private:
    FakeEngine& m_engine;

public:
    EventSource events;
};

namespace {

class FakeApplication final : public DualObject<_SentrelApp> {
public:
    explicit FakeApplication(FakeEngine& engine) : m_engine(engine) {}
    ~FakeApplication() override { m_engine.script.calls.push_back("SentrelApp gone"); }

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        *object = nullptr;
        if (!IsEqualIID(id, IID_IUnknown) && !IsEqualIID(id, __uuidof(_SentrelApp))) return E_NOINTERFACE;
        *object = static_cast<_SentrelApp*>(this);
        AddRef();
        return S_OK;
    }

    STDMETHODIMP CreatePopup(LONG configHwnd, LONG configForm, LONG* mode, _Popup** popup) override {
        *popup = nullptr;
        m_engine.script.configHwnd = configHwnd;
        m_engine.script.configForm = configForm;
        m_engine.script.mode = *mode;
        const HRESULT result = m_engine.script.Call("CreatePopup");
        if (FAILED(result) || m_engine.script.createsNothing) return result;
        m_engine.popup = new FakePopup(m_engine);
        *popup = m_engine.popup;
        return S_OK;
    }

    STDMETHODIMP ReleasePopup(LONG configHwnd, LONG configForm) override {
        m_engine.script.configHwnd = configHwnd;
        m_engine.script.configForm = configForm;
        return m_engine.script.Call("ReleasePopup");
    }

private:
    FakeEngine& m_engine;
};

}  // namespace

HRESULT EngineScript::Call(const std::string& name) {
    calls.push_back(name);
    if (const auto body = within.find(name); body != within.end()) body->second();
    const auto result = results.find(name);
    return result == results.end() ? S_OK : result->second;
}

int EngineScript::Count(const std::string& name) const {
    return static_cast<int>(std::count(calls.begin(), calls.end(), name));
}

FakeEngine::FakeEngine() : m_patch("ole32.dll", "CoCreateInstance", &Create) {
    current = this;
}

FakeEngine::~FakeEngine() {
    current = nullptr;
}

void FakeEngine::Raise(DISPID event, std::vector<Variant> arguments) {
    popup->events.Raise(event, std::move(arguments));
}

size_t FakeEngine::ConnectionCount() const {
    return popup->events.ConnectionCount();
}

HRESULT WINAPI FakeEngine::Create(REFCLSID classId, IUnknown*, DWORD context, REFIID id, void** object) {
    *object = nullptr;
    current->classId = classId;
    current->context = context;
    const HRESULT result = current->script.Call("CreateInstance");
    if (FAILED(result)) return result;
    const auto application = MakeObject<FakeApplication>(*current);
    return application->QueryInterface(id, object);
}
