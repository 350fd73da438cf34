#include <bits/functexcept.h>

#include <exception>
#include <new>

// What the standard library calls where it finds an error. Its own versions make exceptions that own their
// message, and bring two whole string implementations and a random device along for it: a fifth of the
// program.
namespace {

// An argument that breaks a function's contract, in our own code.
class ContractError : public std::exception {};

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the library has given them their names
namespace std {

// A size that no memory can hold is out of memory like any other.
void __throw_length_error(const char* /*message*/) {
    throw bad_alloc();
}

void __throw_bad_alloc() {
    throw bad_alloc();
}

void __throw_bad_array_new_length() {
    throw bad_alloc();
}

void __throw_logic_error(const char* /*message*/) {
    throw ContractError();
}

void __throw_out_of_range_fmt(const char* /*format*/, ...) {
    throw ContractError();
}

}  // namespace std
// NOLINTEND(bugprone-reserved-identifier)
