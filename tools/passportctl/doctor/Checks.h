// SPDX-License-Identifier: MIT
#pragma once

#include "../Host.h"
#include "Findings.h"

// What doctor looks at, one source for each subject.

/// The passport directory, if one is given: its documents, the remembered account, the web tool,
/// and the hub's program below `applicationDir`, the host's own, if the configuration asks for it.
void checkDirectory(const QString &passportDir, const QString &applicationDir, Findings &findings);

/// An address as it may be shown: without a name and a password before its host.
QString withoutUser(const QString &address);

/// Which request library this is.
void addRequestLibrary(Findings &findings);

/// Puts the options in force; false when a finding says why no request could be sent with them.
bool checkConfiguration(Host &host, Findings &findings);

/// The configuration, the way to the service, and the service.
void checkCloud(Host &host, Findings &findings);

/// Whether the service answers, and how fast. An error is yet to be told, by addFailure().
VelqorPassPort::PassportCommunityError checkService(Host &host, Findings &findings);

/// The error of an operation in the words of the table of errors.
void addFailure(const QString &where, const VelqorPassPort::PassportCommunityError &record,
                Findings &findings);
