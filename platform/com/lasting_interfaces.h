// Interfaces of a server that stay known to COM, whichever of its objects go.
#pragma once

#include <windows.h>

#include <vector>

// Shows an object, of which no client ever hears, by each of the interfaces to other processes, and by those
// with which clients create objects, until COM is uninitialized in the calling apartment. What cannot be
// shown is left out.
//
// Wine forgets an interface when the last object goes that other processes hold by it, and first waits for
// calls of that interface to end. One that ends at that very moment it waits for without end, and the
// apartment serves nobody any more. While there is such an object, nothing is forgotten. Windows has no use
// for it and takes no harm.
void KeepInterfaces(std::vector<IID> ids);
