// A COM server with the manager's public interface and as little behind it as there can be: a window and the
// registry calls of a start, made directly.
#include <windows.h>
#include <objbase.h>

#include "bench/bare_server/bare_server.h"
#include "bench/support/bare_store.h"
#include "sentrel_config.h"

namespace {

// The folder of this program, without a trailing separator.
std::string Folder() {
    char path[MAX_PATH];
    const std::string program(path, GetModuleFileNameA(nullptr, path, MAX_PATH));
    return program.substr(0, program.find_last_of('\\'));
}

// As the manager ends: at once, but not before the caller has its result.
void CALLBACK End(HWND, UINT, UINT_PTR, DWORD) {
    ExitProcess(0);
}

// Class object, ConfigControl and Config in one. Its vtable calls come through the type library's proxies.
class BareServer final : public IClassFactory, public _ConfigControl {
public:
    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        if (IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IClassFactory)) {
            *object = static_cast<IClassFactory*>(this);
        } else if (IsEqualIID(id, IID_IDispatch) || IsEqualIID(id, __uuidof(_ConfigControl))) {
            *object = static_cast<_ConfigControl*>(this);
        } else {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    STDMETHODIMP CreateInstance(IUnknown*, REFIID id, void** object) override {
        return QueryInterface(id, object);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }

    STDMETHODIMP ConfigInstance(long* nShowType, IDispatch** config) override {
        if (m_window == nullptr) {
            m_window = MakeWindow();
            BareStore::FirstRun(Folder());
            m_settings = BareStore::Load();
        }
        if (*nShowType == formShow) ShowWindow(m_window, SW_SHOW);
        *config = static_cast<_ConfigControl*>(this);
        return m_window == nullptr ? E_FAIL : S_OK;
    }

    STDMETHODIMP ReleaseConfig() override {
        CoSuspendClassObjects();
        DestroyWindow(m_window);
        SetTimer(nullptr, 0, USER_TIMER_MINIMUM, &End);
        return S_OK;
    }

private:
    HWND m_window = nullptr;
    StoredValues m_settings;
};

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, LPWSTR, int) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    BareServer server;
    DWORD cookie = 0;
    CoRegisterClassObject(kBareServerClass, static_cast<IClassFactory*>(&server), CLSCTX_LOCAL_SERVER,
                          REGCLS_MULTIPLEUSE, &cookie);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
