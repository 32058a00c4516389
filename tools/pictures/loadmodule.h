// Parts of the program that are loaded when they are first needed.
#ifndef KOVTOOLS_LOADMODULE_H
#define KOVTOOLS_LOADMODULE_H

#include <string>

namespace kovtools {

// The address of `symbol` in the module, which lies beside libKOVDoaHandle.so and stays loaded.
// Throws DataError, with the module's name and the reason, when there is none.
void* moduleSymbol(const std::string& module, const std::string& symbol);

// What the module's function `symbol` gives, which takes nothing.
template <typename Codec>
const Codec& loadCodec(const std::string& module, const std::string& symbol)
{
    return reinterpret_cast<const Codec& (*)()>(moduleSymbol(module, symbol))();
}

}  // namespace kovtools

#endif
