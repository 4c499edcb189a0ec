// SPDX-License-Identifier: MIT
#if defined(__APPLE__)

#include <dlfcn.h>

// What other systems' linkers have an option for: the library stays when a host closes it.
__attribute__((constructor)) static void stayLoaded()
{
    Dl_info self;
    if (::dladdr(reinterpret_cast<const void *>(&stayLoaded), &self) != 0)
        ::dlopen(self.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

#endif
