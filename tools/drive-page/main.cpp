// SPDX-License-Identifier: MIT
#include "DebuggedPage.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <cstdio>

namespace {

const char description[] =
    R"(Fills in the page that a web tool on Qt WebEngine shows, as a person would: for tests and
demonstrations of the web flows, also without a display. The web tool must run, or start soon,
with QTWEBENGINE_REMOTE_DEBUGGING=PORT in its environment, or Chromium in its place with
--remote-debugging-port=PORT; the browser engine then lets itself be driven through that port, by
anybody on the machine.

STEPS is a file with one step on a line:

  wait SCRIPT         until it is true
  run SCRIPT
  run-file FILE       a script of any length, named from this file's folder
  print SCRIPT        its value, on standard output
  type TEXT           into the element that has the focus
  type-result SCRIPT  its value, the same way
  call METHOD JSON    a call of the DevTools protocol, as Emulation.setEmulatedMedia {...}
  picture FILE        what the page shows, as PNG
  include FILE        the steps of another file, named from this one's folder
  # COMMENT

A SCRIPT is an expression of JavaScript; a promise is waited for. Each step has a minute. When one
fails the page is closed. Exit codes: 0 all steps were taken, 1 one failed, 2 wrong arguments.)";

void takeAll(DebuggedPage &page, const QString &path);

void savePicture(DebuggedPage &page, const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(page.picture()) < 0)
        fail(path + QStringLiteral(" cannot be written"));
}

QString contentsOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(path + QStringLiteral(" cannot be read"));
    return QString::fromUtf8(file.readAll());
}

void print(const QString &text)
{
    if (std::puts(text.toUtf8().constData()) < 0 || std::fflush(stdout) != 0)
        fail(QStringLiteral("standard output cannot be written"));
}

QString shown(const QJsonValue &value)
{
    const QByteArray list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return value.isString() ? value.toString() : QString::fromUtf8(list.mid(1, list.size() - 2));
}

void take(DebuggedPage &page, const QString &step, const QDir &folder)
{
    const QString verb = step.section(QLatin1Char(' '), 0, 0);
    const QString rest = step.section(QLatin1Char(' '), 1).trimmed();
    if (verb == QLatin1String("wait"))
        page.waitFor(rest);
    else if (verb == QLatin1String("run"))
        page.evaluate(rest);
    else if (verb == QLatin1String("run-file"))
        page.evaluate(contentsOf(folder.filePath(rest)));
    else if (verb == QLatin1String("print"))
        print(shown(page.evaluate(rest)));
    else if (verb == QLatin1String("type"))
        page.type(rest);
    else if (verb == QLatin1String("type-result"))
        page.type(shown(page.evaluate(rest)));
    else if (verb == QLatin1String("call"))
        page.call(rest.section(QLatin1Char(' '), 0, 0), rest.section(QLatin1Char(' '), 1));
    else if (verb == QLatin1String("picture"))
        savePicture(page, rest);
    else if (verb == QLatin1String("include"))
        takeAll(page, folder.filePath(rest));
    else if (!verb.isEmpty() && !verb.startsWith(QLatin1Char('#')))
        fail(QStringLiteral("no such step: ") + step);
}

void takeAll(DebuggedPage &page, const QString &path)
{
    const QStringList steps = contentsOf(path).split(QLatin1Char('\n'));
    for (const QString &step : steps)
        take(page, step.trimmed(), QFileInfo(path).dir());
}

void drive(quint16 port, const QString &steps)
{
    DebuggedPage page(port);
    try {
        takeAll(page, steps);
    } catch (const Failure &) {
        page.close(); // whoever waits for that need not wait for a time-out
        throw;
    }
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(description));
    parser.addPositionalArgument(QStringLiteral("PORT"), QStringLiteral("of the web tool."));
    parser.addPositionalArgument(QStringLiteral("STEPS"), QStringLiteral("the file."));
    const auto help = parser.addHelpOption();
    const bool understood = parser.parse(QCoreApplication::arguments());
    if (understood && parser.isSet(help))
        parser.showHelp();
    const QStringList arguments = parser.positionalArguments();
    const quint16 port = arguments.value(0).toUShort();
    if (!understood || arguments.size() != 2 || port == 0) {
        std::fprintf(stderr, "usage: drive-page PORT STEPS, or --help\n");
        return 2;
    }
    try {
        drive(port, arguments[1]);
    } catch (const Failure &failure) {
        std::fprintf(stderr, "drive-page: %s\n", failure.what());
        return 1;
    }
    return 0;
}
