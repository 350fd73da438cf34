// How long an out-of-process COM server lives: as long as somebody locks it.
#pragma once

namespace ServerProcess {

// Every object that a client holds and everything else that must keep the process alive (a loaded window, a
// LockServer call) locks once. The last unlock turns new clients away and ends the message loop of the
// calling thread. A server nobody has locked yet waits for its first client.
void Lock() noexcept;
void Unlock() noexcept;

}  // namespace ServerProcess
