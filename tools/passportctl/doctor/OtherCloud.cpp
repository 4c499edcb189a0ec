// SPDX-License-Identifier: MIT
#include "Checks.h"

// Of another request library nothing is known but what the library's own interface tells.

using namespace VelqorPassPort;

void addRequestLibrary(Findings &findings)
{
    findings.addFact("requestLibrary", QStringLiteral("request library"),
                     QStringLiteral("not the bundled one"));
}

bool checkConfiguration(Host &host, Findings &findings)
{
    const PassportCommunityError record = host.applyOptions();
    if (record.isError())
        addFailure(QStringLiteral("configuration"), record, findings);
    return !record.isError();
}

void checkCloud(Host &host, Findings &findings)
{
    if (!checkConfiguration(host, findings))
        return;
    findings.addFact("address", QStringLiteral("address"), withoutUser(host.address()));
    const PassportCommunityError record = checkService(host, findings);
    if (record.isError())
        addFailure(withoutUser(host.address()), record, findings);
}
