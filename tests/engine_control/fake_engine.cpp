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
        *value = m_engine.script.state;
        return m_engine.script.Play("State");
    }
    STDMETHODIMP Start() override { return m_engine.script.Play("Start"); }
    STDMETHODIMP Stop() override { return m_engine.script.Play("Stop"); }
    STDMETHODIMP Pause() override { return m_engine.script.Play("Pause"); }
    STDMETHODIMP ReloadSettings() override { return m_engine.script.Play("ReloadSettings"); }
    STDMETHODIMP get_LogFile(BSTR* value) override {
        *value = nullptr;
        return m_engine.script.Play("LogFile",
                                    [&] { *value = SysAllocString(m_engine.script.logFile.c_str()); });
    }

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
        ComPtr<IDispatch> dispatch;
        *cookie = 0;
        if (FAILED(sink->QueryInterface(IID_PPV_ARGS(&dispatch)))) return CONNECT_E_CANNOTCONNECT;
        *cookie = ++m_lastCookie;
        sinks.emplace(*cookie, dispatch);
        m_engine.script.Run(m_engine.script.behind, "Advise");
        return S_OK;
    }
    STDMETHODIMP Unadvise(DWORD cookie) override {
        const ComPtr<_Popup> self(this);
        EngineScript& script = m_engine.script;
        script.Run(script.within, "Unadvise");
        const auto refused = script.results.find("Unadvise");
        HRESULT result = S_OK;
        if (refused != script.results.end()) {
            result = refused->second;
        } else if (sinks.erase(cookie) == 0) {
            result = CONNECT_E_NOCONNECTION;
        }
        script.Run(script.behind, "Unadvise");
        return result;
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
        *popup = nullptr;
        m_engine.script.configHwnd = configHwnd;
        m_engine.script.configForm = configForm;
        m_engine.script.mode = *mode;
        return m_engine.script.Play("CreatePopup", [&] {
            if (m_engine.script.createsNothing) return;
            m_engine.popup = new FakePopup(m_engine);
            *popup = m_engine.popup;
        });
    }

    STDMETHODIMP ReleasePopup(LONG configHwnd, LONG configForm) override {
        m_engine.script.configHwnd = configHwnd;
        m_engine.script.configForm = configForm;
        return m_engine.script.Play("ReleasePopup");
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

HRESULT EngineScript::Play(const std::string& name, const std::function<void()>& done) {
    const HRESULT result = Call(name);
    if (SUCCEEDED(result) && done) done();
    Run(behind, name);
    return result;
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
    *object = nullptr;
    current->classId = classId;
    current->context = context;
    return current->script.Play("CreateInstance",
                                [&] { MakeObject<FakeApplication>(*current)->QueryInterface(id, object); });
}
