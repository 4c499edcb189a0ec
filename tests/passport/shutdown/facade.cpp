// SPDX-License-Identifier: MIT
#include "facade.h"

void liveOnce(const QStringList &arguments)
{
    Facade(arguments).use();
}
