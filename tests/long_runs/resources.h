// What this process holds of the system.
#pragma once

#include <windows.h>

struct Resources {
    long heapBytes = 0;  // in busy blocks of all heaps
    long heapBlocks = 0;
    long kernelHandles = 0;  // registry keys among them
    long gdiObjects = 0;
    long menus = 0;
    long windows = 0;
};

Resources HeldNow();

// What is held more than before.
Resources operator-(const Resources& held, const Resources& before) noexcept;

// The kernel handles of any process.
long KernelHandlesOf(DWORD processId);
