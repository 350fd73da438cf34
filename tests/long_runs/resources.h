// What this process holds of the system.
#pragma once

#include <windows.h>

#include <array>

// Heap bytes and blocks: the busy ones of all heaps. Registry keys are among the kernel handles.
enum Resource { HeapBytes, HeapBlocks, KernelHandles, GdiObjects, MenuHandles, WindowHandles };
using Resources = std::array<long, WindowHandles + 1>;

Resources HeldNow();
