#include "tests/engine_control/fake_engine.h"

#include <olectl.h>

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

// Runs what is to run behind a call when the call's result is there.
class BehindCall {
public:
    BehindCall(EngineScript& script, const char* name) : m_script(script), m_name(name) {}
    BehindCall(const BehindCall&) = delete;
    BehindCall& operator=(const BehindCall&) = delete;
    ~BehindCall() { m_script.Run(m_script.behind, m_name); }

private:
    EngineScript& m_script;
    const char* const m_name;
};

class FakePopup final : public DualObject<_Popup>,
                        private IConnectionPointContainer,
                        private IConnectionPoint {
public:
    explicit FakePopup(FakeEngine& engine) : m_engine(engine) {}
    ~FakePopup() override {
        m_engine.script.Call(sinks.empty() ? "Popup gone" : "Popup gone with its events");
        if (m_engine.popup == this) m_engine.popup = nullptr;
    }

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        *object = nullptr;
        if (IsEqualIID(id, IID_IConnectionPointContainer)) {
            const HRESULT result = m_engine.script.Call("Advise");
            if (FAILED(result)) return result;
            *object = static_cast<IConnectionPointContainer*>(this);
        } else if (IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDispatch) ||
                   IsEqualIID(id, __uuidof(_Popup))) {
            *object = static_cast<_Popup*>(this);
        } else {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }

    STDMETHODIMP_(ULONG) AddRef() override { return DualObject::AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return DualObject::Release(); }

    STDMETHODIMP get_State(LONG* value) override {
        const BehindCall behind(m_engine.script, "State");
        *value = m_engine.script.state;
        return m_engine.script.Call("State");
    }
    STDMETHODIMP Start() override { return Call("Start"); }
    STDMETHODIMP Stop() override { return Call("Stop"); }
    STDMETHODIMP Pause() override { return Call("Pause"); }
    STDMETHODIMP ReloadSettings() override { return Call("ReloadSettings"); }
    STDMETHODIMP get_LogFile(BSTR* value) override {
        const BehindCall behind(m_engine.script, "LogFile");
        *value = nullptr;
        const HRESULT result = m_engine.script.Call("LogFile");
        if (SUCCEEDED(result)) *value = SysAllocString(m_engine.script.logFile.c_str());
        return result;
    }

private:
    HRESULT Call(const char* name) {
        const BehindCall behind(m_engine.script, name);
        return m_engine.script.Call(name);
    }

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
        const BehindCall behind(m_engine.script, "Advise");
        ComPtr<IDispatch> dispatch;
        *cookie = 0;
        if (FAILED(sink->QueryInterface(IID_PPV_ARGS(&dispatch)))) return CONNECT_E_CANNOTCONNECT;
        *cookie = ++m_lastCookie;
        sinks.emplace(*cookie, dispatch);
        return S_OK;
    }
    STDMETHODIMP Unadvise(DWORD cookie) override {
        const ComPtr<_Popup> self(this);
        const BehindCall behind(m_engine.script, "Unadvise");
        m_engine.script.Run(m_engine.script.within, "Unadvise");
        const auto refused = m_engine.script.results.find("Unadvise");
        if (refused != m_engine.script.results.end()) return refused->second;
        return sinks.erase(cookie) == 0 ? CONNECT_E_NOCONNECTION : S_OK;
    }
    STDMETHODIMP EnumConnections(IEnumConnections**) override { return E_NOTIMPL; }

    FakeEngine& m_engine;
    DWORD m_lastCookie = 0;

public:
    // Another process's business: the end of this one refuses no call of it.
    std::map<DWORD, ComPtr<IDispatch>> sinks;
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
        const BehindCall behind(m_engine.script, "CreatePopup");
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
        const BehindCall behind(m_engine.script, "ReleasePopup");
        return m_engine.script.Call("ReleasePopup");
    }

private:
    FakeEngine& m_engine;
};

}  // namespace

HRESULT EngineScript::Call(const std::string& name) {
    calls.push_back(name);
    Run(within, name);
    const auto result = results.find(name);
    return result == results.end() ? S_OK : result->second;
}

void EngineScript::Run(const std::map<std::string, std::function<void()>>& bodies,
                       const std::string& name) const {
    if (const auto body = bodies.find(name); body != bodies.end()) body->second();
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
    const ComPtr<FakePopup> held(popup);
    // DISPPARAMS holds the arguments last to first.
    std::reverse(arguments.begin(), arguments.end());
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

HRESULT WINAPI FakeEngine::Create(REFCLSID classId, IUnknown*, DWORD context, REFIID id, void** object) {
    const BehindCall behind(current->script, "CreateInstance");
    *object = nullptr;
    current->classId = classId;
    current->context = context;
    const HRESULT result = current->script.Call("CreateInstance");
    if (FAILED(result)) return result;
    const auto application = MakeObject<FakeApplication>(*current);
    return application->QueryInterface(id, object);
}
