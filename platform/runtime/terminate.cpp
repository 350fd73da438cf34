#include <cstdlib>

// The runtime's own handler prints the type of the exception that nobody caught; with it come a demangler and
// stdio, a tenth of the program. A program without a console just ends.
namespace __gnu_cxx {

// NOLINTNEXTLINE(bugprone-reserved-identifier): the runtime has given it the name
void __verbose_terminate_handler();

void __verbose_terminate_handler() {
    std::abort();
}

}  // namespace __gnu_cxx
