// Parts of the program that are loaded when they are first needed.
#ifndef KOVTOOLS_LOADMODULE_H
#define KOVTOOLS_LOADMODULE_H

#include <string>

namespace kovtools {

// The address of `symbol` in the module, which lies beside libKOVDoaHandle.so and stays loaded.
// Throws DataError, with the module's name and the reason, when there is none.
void* moduleSymbol(const std::string& module, const std::string& symbol);

template <typename Function>
Function loadModule(const std::string& module, const std::string& symbol)
{
    return reinterpret_cast<Function>(moduleSymbol(module, symbol));
}

}  // namespace kovtools

#endif
