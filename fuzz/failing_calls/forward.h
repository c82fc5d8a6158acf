#pragma once

#include <cxxabi.h>
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "failing_calls/failing.h"
#include "native/handle.h"

/// The address that a function returns to, taken in the function itself.
#define CALLER __builtin_return_address(0)

namespace failing {

/// What a call answers that fails, and what it leaves for GetLastError.
template <typename Answer>
struct Failure {
    Answer answer;
    DWORD error;
};

/// The platform's own function of the same name, and what it is called.
template <typename Function>
struct Original {
    explicit Original(Function own) {
        Dl_info info{};
        dladdr(reinterpret_cast<void*>(own), &info);
        call = reinterpret_cast<Function>(dlsym(RTLD_NEXT, info.dli_sname));
        if (call == nullptr) {
            std::fprintf(stderr, "no platform function %s\n", info.dli_sname);
            std::abort();
        }
        char* plain = abi::__cxa_demangle(info.dli_sname, nullptr, nullptr, nullptr);
        name = plain;
        std::free(plain);
        name.resize(name.find('('));
        source.name = name.c_str();
    }

    Function call;
    std::string name;
    Source source{};
};

/// Fails if its turn has come; calls the platform's function otherwise.
template <auto Own, typename Answer, typename... Arguments>
Answer Forward(const void* caller, const Failure<Answer>& failure, Arguments... arguments) {
    static const Original original(Own);
    if (Fails(original.source, caller)) {
        return posix::Fail(failure.error, failure.answer);
    }
    return original.call(arguments...);
}

}  // namespace failing
