// Counts what this program calls of Windows, whatever that is.
#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

// By function name; one without a name is "#" and its number. Functions that were not called are not there.
using CallCounts = std::map<std::string, int>;

// While it exists, each function that this program imports from Windows' own libraries is counted on its
// way. Calls that those libraries make among themselves are not seen. One at a time; functions that are
// replaced are replaced before.
class ImportCounter {
public:
    ImportCounter();
    ImportCounter(const ImportCounter&) = delete;
    ImportCounter& operator=(const ImportCounter&) = delete;
    ~ImportCounter();

    // Runs the body, and keeps what it called.
    void Count(const std::function<void()>& body);

    // Of all libraries; of the registry, of files, of the notification area, of timers.
    CallCounts All() const;
    CallCounts Registry() const;
    CallCounts Files() const;
    CallCounts Shell() const;
    CallCounts Timers() const;

private:
    struct Import {
        std::string module;
        std::string function;
        void** slot;
        void* original;
    };

    CallCounts Where(const std::function<bool(const Import&)>& isWanted) const;

    std::vector<Import> m_imports;
    std::vector<int> m_counts;  // since the beginning
    std::vector<int> m_last;    // of the last body
    BYTE* m_thunks = nullptr;
};
