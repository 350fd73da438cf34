// What a COM server needs under Wine alone.
#pragma once

#include <windows.h>

#include <vector>

// To be called once in the apartment that serves clients, before its first object. interfaces: those by which
// other processes hold the objects. Does nothing on Windows.
//
// Wine forgets an interface when the last object that other processes hold by it goes, and first waits for
// running calls of that interface to end. It waits without end for a call that ends at that very moment, and
// the apartment serves nobody any more. So an object that no client ever receives is marshalled by each of
// the interfaces, and by those with which clients create objects, until COM is uninitialized in the
// apartment. An interface that cannot be marshalled is left out.
void WorkAroundWine(std::vector<IID> interfaces);
