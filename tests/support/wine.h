// Whether this is Wine.
#pragma once

// Wine's version, "" on Windows.
const char* WineVersion();

inline bool RunsUnderWine() {
    return *WineVersion() != '\0';
}
