#include "tests/engine_control/fake_engine.h"

#include <olectl.h>

#include <algorithm>

#include "platform/com/com_ptr.h"
#include "platform/com/counted_object.h"

namespace {

void Run(const std::map<std::string, std::function<void()>>& bodies, const std::string& name) {
    if (const auto body = bodies.find(name); body != bodies.end()) body->second();
}

// What comes in within the call, and then the call's result.
HRESULT Receive(const EngineScript& script, const std::string& name) {
    Run(script.within, name);
    const auto result = script.results.find(name);
    return result == script.results.end() ? S_OK : result->second;
}

// A whole call: done gives what it returns.
HRESULT Play(EngineScript& script, const std::string& name, const std::function<void()>& done = {}) {
    script.calls.push_back(name);
    const HRESULT result = Receive(script, name);
    if (result == S_OK && done) done();
    Run(script.behind, name);
    return result;
}

// The members of IDispatch, which a dual interface is never called by here.
template <class Interface>
class DualObject : public CountedObject<Interface> {
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }
    bool Supports(REFIID id) const override {
        return IsEqualIID(id, IID_IDispatch) || CountedObject<Interface>::Supports(id);
    }
};

}  // namespace

class FakePopup final : public DualObject<_Popup>,
                        private IConnectionPointContainer,
                        private IConnectionPoint {
public:
    explicit FakePopup(FakeEngine& engine) : m_engine(engine), m_script(engine.script) {}
    ~FakePopup() override {
        Play(m_script, sinks.empty() ? "Popup gone" : "Popup gone with its events");
        if (m_engine.popup == this) m_engine.popup = nullptr;
    }

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        if (!IsEqualIID(id, IID_IConnectionPointContainer)) return DualObject::QueryInterface(id, object);
        *object = static_cast<IConnectionPointContainer*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return DualObject::AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return DualObject::Release(); }

    STDMETHODIMP get_State(LONG* value) override {
        *value = m_script.state;
        return Play(m_script, "State");
    }
    STDMETHODIMP Start() override { return Play(m_script, "Start"); }
    STDMETHODIMP Stop() override { return Play(m_script, "Stop"); }
    STDMETHODIMP Pause() override { return Play(m_script, "Pause"); }
    STDMETHODIMP ReloadSettings() override { return Play(m_script, "ReloadSettings"); }
    STDMETHODIMP get_LogFile(BSTR* value) override {
        *value = nullptr;
        return Play(m_script, "LogFile", [&] { *value = SysAllocString(m_script.logFile.c_str()); });
    }

    // Another process's business: the end of this one refuses no call of it.
    std::map<DWORD, ComPtr<IDispatch>> sinks;

private:
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints**) override { return E_NOTIMPL; }
    STDMETHODIMP FindConnectionPoint(REFIID id, IConnectionPoint** point) override {
        *point = nullptr;
        if (!IsEqualIID(id, __uuidof(__Popup))) return CONNECT_E_NOCONNECTION;
        *point = this;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP GetConnectionInterface(IID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer**) override { return E_NOTIMPL; }
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override {
        *cookie = 0;
        return Play(m_script, "Advise", [&] {
            *cookie = ++m_lastCookie;
            sink->QueryInterface(IID_PPV_ARGS(&sinks[*cookie]));
        });
    }
    STDMETHODIMP Unadvise(DWORD cookie) override {
        const ComPtr<_Popup> self(this);
        const HRESULT result = Receive(m_script, "Unadvise");
        if (result == S_OK) sinks.erase(cookie);
        Run(m_script.behind, "Unadvise");
        return result;
    }
    STDMETHODIMP EnumConnections(IEnumConnections**) override { return E_NOTIMPL; }

    FakeEngine& m_engine;
    EngineScript& m_script;
    DWORD m_lastCookie = 0;
};

namespace {

class FakeApplication final : public DualObject<_SentrelApp> {
public:
    explicit FakeApplication(FakeEngine& engine) : m_engine(engine) {}
    ~FakeApplication() override { m_engine.script.calls.push_back("SentrelApp gone"); }

    STDMETHODIMP CreatePopup(LONG configHwnd, LONG configForm, LONG* mode, _Popup** popup) override {
        *popup = nullptr;
        m_engine.script.configHwnd = configHwnd;
        m_engine.script.configForm = configForm;
        m_engine.script.mode = *mode;
        return Play(m_engine.script, "CreatePopup", [&] {
            m_engine.popup = new FakePopup(m_engine);
            *popup = m_engine.popup;
        });
    }

    STDMETHODIMP ReleasePopup(LONG configHwnd, LONG configForm) override {
        m_engine.script.configHwnd = configHwnd;
        m_engine.script.configForm = configForm;
        return Play(m_engine.script, "ReleasePopup");
    }

private:
    FakeEngine& m_engine;
};

}  // namespace

int EngineScript::Count(const std::string& name) const {
    return static_cast<int>(std::ranges::count(calls, name));
}

void FakeEngine::Raise(DISPID event, std::vector<Variant> arguments) {
    const ComPtr<FakePopup> held(popup);
    // DISPPARAMS holds the arguments last to first.
    std::ranges::reverse(arguments);
    std::vector<VARIANT> values;
    for (const Variant& argument : arguments)
        values.push_back(argument.Value());
    DISPPARAMS parameters{values.data(), nullptr, static_cast<UINT>(values.size()), 0};
    const auto sinks = held->sinks;
    for (const auto& [cookie, sink] : sinks) {
        sink->Invoke(event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, nullptr, nullptr,
                     nullptr);
    }
}

size_t FakeEngine::ConnectionCount() const {
    return popup->sinks.size();
}

HRESULT FakeEngine::Create(REFIID id, void** object) {
    *object = nullptr;
    return Play(script, "CreateInstance",
                [&] { MakeObject<FakeApplication>(*this)->QueryInterface(id, object); });
}
