// SPDX-License-Identifier: MIT
#include "Checks.h"

#include "../WebTool.h"

#include <config/ConfigInformation.h>
#include <config/PassportDirectory_p.h>

using namespace VelqorPassPort;

namespace {

void checkWebTool(const PassportDirectory &directory, Findings &findings)
{
    for (const char *program : {WebTool::apart, WebTool::bundled}) {
        const QString path = directory.webTool(QLatin1String(program));
        const QString problem = problemOfProgram(path);
        if (problem.isEmpty())
            continue;
        findings.addWarning(path, problem,
                            program == WebTool::apart
                                ? QStringLiteral("The web sign-in needs it: copyOpenWebFile() puts "
                                                 "the web tool there.")
                                : QStringLiteral("The other web pages need it: copyOpenWebFile() "
                                                 "puts the web tool there."));
    }
}

void checkWebAddresses(const PassportDirectory &directory, Findings &findings)
{
    const QJsonObject cloud = directory.cloudSection();
    const bool isBeta = cloud.value(QStringLiteral("env")).toString() == QLatin1String("beta");
    const QString pages = isBeta ? QStringLiteral("testurl") : QStringLiteral("url");
    const auto need = [&](const QString &key, const QString &advice) {
        if (cloud.value(key).toString().isEmpty())
            findings.addWarning(directory.passportConfiguration() + QStringLiteral(", nubelo.") +
                                    key,
                                QStringLiteral("there is no address"), advice);
    };
    need(pages, QStringLiteral("Give the address of the web pages: the web flows need it."));
    need(QStringLiteral("hasnet"),
         QStringLiteral("Give an address that always answers: hasNet() is false without one."));
}

void checkHub(const PassportDirectory &directory, const QString &applicationDir, Findings &findings)
{
    const auto section = [](const QString &document, const char *name) {
        return g_getConfigInformation(document).value(QLatin1String(name)).toObject();
    };
    const QJsonObject usual = section(directory.systemConfiguration(), "Default");
    if (!usual.value(QStringLiteral("StartHub")).toBool())
        return;
    const QString where = directory.passportConfiguration() + QStringLiteral(", hub.path");
    const QString path =
        section(directory.passportConfiguration(), "hub").value(QStringLiteral("path")).toString();
    if (path.size() <= 4) {
        findings.addWarning(where, QStringLiteral("it names no program, but StartHub is true"),
                            QStringLiteral("Give the program's path with \".exe\" at its end."));
        return;
    }
    if (applicationDir.isEmpty()) {
        findings.addNote(where, QStringLiteral("the hub's program has not been looked for"),
                         QStringLiteral("Give --application-dir: its path is relative to the "
                                        "directory of the host's program."));
        return;
    }
    const QString program = applicationDir + QLatin1Char('/') + path.left(path.size() - 4);
    const QString problem = problemOfProgram(program);
    if (!problem.isEmpty())
        findings.addWarning(program, problem,
                            QStringLiteral("Install the hub there or mend hub.path, whose last "
                                           "four characters (\".exe\") are always dropped."));
}

void checkAccountFile(const PassportDirectory &directory, Findings &findings)
{
    const QFileInfo file(directory.accountFile());
    constexpr auto others = QFile::ReadGroup | QFile::ReadOther;
    if (file.exists() && (file.permissions() & others))
        findings.addWarning(file.filePath(),
                            QStringLiteral("others can read it, and it may hold a password"),
                            QStringLiteral("Take the permission from them (chmod 600)."));
    const QFileInfo folder(file.path());
    if (folder.exists() && !folder.isWritable())
        findings.addWarning(file.path(), QStringLiteral("it is not writable"),
                            QStringLiteral("Without it no account can be remembered."));
}

} // namespace

void checkDirectory(const QString &passportDir, const QString &applicationDir, Findings &findings)
{
    if (passportDir.isEmpty())
        return;
    findings.addFact("passportDir", QStringLiteral("passport directory"), passportDir);
    if (!QFileInfo(passportDir).isDir()) {
        findings.addError(Exit::Configuration, passportDir,
                          QStringLiteral("there is no such directory"),
                          QStringLiteral("Give the directory that the host hands to initial()."));
        return;
    }
    const PassportDirectory directory(passportDir);
    for (const QString &path :
         {directory.systemConfiguration(), directory.passportConfiguration()}) {
        const QString problem = Host::problemOfDocument(path);
        if (!problem.isEmpty())
            findings.addError(Exit::Configuration, path, problem,
                              QStringLiteral("Without this file initial() starts nothing."));
    }
    checkAccountFile(directory, findings);
    checkWebAddresses(directory, findings);
    checkWebTool(directory, findings);
    checkHub(directory, applicationDir, findings);
}
