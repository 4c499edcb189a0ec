#pragma once

#include "crypto/kernels/Kernel_p.h"

#include <QtTest/QtTest>

/// Makes sure that the program runs on the kernel its environment asks for; skips it when the
/// machine does not have that one.
inline void checkForcedKernel()
{
    using namespace VelqorPassPort::Kernels;
    const QByteArray wanted = qgetenv("PASSPORT_CRYPTO_KERNEL");
    if (wanted.isEmpty())
        return;
    for (const Kernel *kernel : {portableKernel(), aesniKernel(), vaesKernel(), neonKernel()}) {
        if (kernel && wanted == kernel->name) {
            QCOMPARE(QByteArray(activeKernel().name), wanted);
            return;
        }
    }
    QSKIP("this machine has no kernel of that name");
}
