#include "tools/pictures/loadmodule.h"

#include <dlfcn.h>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"

namespace kovtools {

namespace {

[[noreturn]] void complain(const std::string& module)
{
    const char* const reason = dlerror();
    throw DataError("cannot load " + inQuotes(module) +
                    ", a part of this program: " + (reason != nullptr ? reason : "unknown reason"));
}

}  // namespace

void* moduleSymbol(const std::string& module, const std::string& symbol)
{
    void* const handle = dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        complain(module);
    }
    void* const address = dlsym(handle, symbol.c_str());
    if (address == nullptr) {
        complain(module);
    }
    return address;
}

}  // namespace kovtools
