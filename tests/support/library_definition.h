// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <dlfcn.h>

/// The library's own definition of a function that the program defines, too, in front of it.
/// \param mangled  The function's name in the library.
template <class Function>
Function* libraryDefinition(Function* /*ours*/, const char* mangled) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, mangled));
}
