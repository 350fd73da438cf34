// Loading and saving all settings beside the bare registry calls that the store's rules ask for.
#pragma once

#include <span>

// A store to measure with: how many rows its lists have, and how often each side runs.
struct Lengths {
    const char* name;
    int exclude;
    int banners;
    int search;
    int rounds;
    int repeats;
    double wanted;  // the highest ratio that is accepted; 0 where none is set
};

// Writes two rows of the table for each: the load and the save. It is the work of a whole program, and
// returns its exit code.
int CompareTransfers(std::span<const Lengths> all);
