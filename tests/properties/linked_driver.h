// The driver's functions linked into the program, with the members of LoadedDriver. Its state is
// that of a library just loaded.
#pragma once

#include "driver/ostrel_kmr.h"

struct LinkedDriver {
    LinkedDriver()
    {
        driver = Ostrel_kmr();
    }

#define OSTREL_KMR_MEMBER(name) decltype(&intf_##name) name = intf_##name;
    OSTREL_KMR_FUNCTIONS(OSTREL_KMR_MEMBER)
#undef OSTREL_KMR_MEMBER
};
