#include "tools/pictures/loadmodule.h"

#include <KOVDoaHandle/api/results.h>
#include <dlfcn.h>

#include <filesystem>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"

namespace kovtools {

namespace {

// By its address, because how a loader searches for a bare name depends on who calls it.
std::filesystem::path folderOfLibrary()
{
    Dl_info library{};
    dladdr(reinterpret_cast<const void*>(&createResultHandle), &library);
    return std::filesystem::path(library.dli_fname != nullptr ? library.dli_fname : "").parent_path();
}

[[noreturn]] void complain(const std::string& module)
{
    const char* const reason = dlerror();
    throw DataError("cannot load " + inQuotes(module) +
                    ", a part of this program: " + (reason != nullptr ? reason : "unknown reason"));
}

}  // namespace

void* moduleSymbol(const std::string& module, const std::string& symbol)
{
    void* const handle = dlopen((folderOfLibrary() / module).c_str(), RTLD_NOW | RTLD_LOCAL);
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
