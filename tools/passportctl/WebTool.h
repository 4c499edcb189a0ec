// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QFileInfo>

/// The two places below the web tool's folder where the library looks for its program.
namespace WebTool {

constexpr char apart[] = "openweburl";                                 ///< for the sign-in
constexpr char bundled[] = "openweburl.app/Contents/MacOS/openweburl"; ///< for all other pages

} // namespace WebTool

/// What keeps a program from being started; empty: nothing.
inline QString problemOfProgram(const QString &path)
{
    const QFileInfo program(path);
    if (!program.isFile())
        return QStringLiteral("there is no such file");
    return program.isExecutable() ? QString() : QStringLiteral("it is not executable");
}
