// How long an out-of-process COM server lives: as long as somebody locks it.
#pragma once

#include <windows.h>

namespace ServerProcess {

// Every object that a client holds and everything else that must keep the process alive (a loaded window, a
// LockServer call) locks once. The last unlock turns new clients away and ends the message loop of the
// calling thread. A server nobody has locked yet waits for its first client.
void Lock() noexcept;
void Unlock() noexcept;

// The process is about to end, whoever still locks it: new clients start a process of their own, and from now
// on ComMethod refuses every call of an object. There is no way back.
void Stop() noexcept;
bool Stopping() noexcept;

// A class of objects that clients can create, by the number of its registration; Stop revokes it.
void Offer(DWORD registration);

}  // namespace ServerProcess
