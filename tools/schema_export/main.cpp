// schema_export FOLDER: writes everything that is made from the settings schema: the policies'
// .admx and en-US\*.adml files, calvane-defaults.reg and settings-schema.md. The folder and its en-US exist.
#include <cstdio>
#include <exception>

#include "tools/schema_export/defaults_file.h"
#include "tools/schema_export/policy.h"
#include "tools/schema_export/schema_page.h"

int wmain(int count, wchar_t** arguments) {
    if (count != 2) {
        std::fputs("usage: schema_export FOLDER\n", stderr);
        return 2;
    }
    try {
        const std::vector<Option> options = Options();
        const std::vector<OptionList> lists = OptionLists();
        WritePolicy(options, lists, arguments[1]);
        WriteDefaultsFile(options, lists, arguments[1]);
        WriteSchemaPage(options, lists, arguments[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
