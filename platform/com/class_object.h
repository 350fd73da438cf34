// The class object of a creatable class in a local server.
#pragma once

#include <windows.h>
#include <unknwn.h>

#include <functional>

#include "platform/com/com_ptr.h"

// Makes one object: stores a new reference to its interface id in *object.
using ObjectMaker = std::function<HRESULT(REFIID id, void** object)>;

// Offers a class to the COM runtime for as long as it exists; one process serves every client.
class ClassRegistration {
public:
    // Throws AutomationError when the class cannot be offered. Clients are served only after
    // CoResumeClassObjects, so that several classes appear together.
    ClassRegistration(REFCLSID classId, ObjectMaker maker);
    ClassRegistration(const ClassRegistration&) = delete;
    ClassRegistration& operator=(const ClassRegistration&) = delete;
    ~ClassRegistration();

private:
    DWORD m_cookie = 0;
};
