#include "tools/pictures/loadmodule.h"

#include <KOVDoaHandle/api/results.h>
#include <dlfcn.h>

#include <filesystem>
#include <system_error>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"

namespace kovtools {

namespace {

// By its address, because how a loader searches for a bare name depends on who calls it.
std::filesystem::path folderOfLibrary()
{
    Dl_info library{};
    dladdr(reinterpret_cast<const void*>(&createResultHandle), &library);
    const std::filesystem::path file = library.dli_fname != nullptr ? library.dli_fname : "";
    std::error_code error;  // then there is no working directory, and the loader says what it cannot find
    const std::filesystem::path whole = std::filesystem::absolute(file, error);
    return (error ? file : whole).parent_path();
}

// From the start on: where the loader was led by a relative path, it goes astray once the program has changed its
// working directory.
const std::filesystem::path moduleFolder = folderOfLibrary();

[[noreturn]] void complain(const std::string& module)
{
    const char* const reason = dlerror();
    throw DataError("cannot load " + inQuotes(module) +
                    ", a part of this program: " + (reason != nullptr ? reason : "unknown reason"));
}

}  // namespace

void* moduleSymbol(const std::string& module, const std::string& symbol)
{
    void* const handle = dlopen((moduleFolder / module).c_str(), RTLD_NOW | RTLD_LOCAL);
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
