// SPDX-License-Identifier: MIT
#include "Page.h"
#include "PageChannel.h"
#include "ReportPipe.h"
#include "Start.h"
#include "Texts.h"
#include "Window.h"

#include <QtWebEngineWidgets/QWebEngineProfile>
#include <QtWebEngineWidgets/QWebEngineSettings>
#include <QtWidgets/QApplication>

#include <cstdio>

namespace {

constexpr int wrongCommandLine = 2;

QStringList argumentsOf(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

int usage(const QString &problem)
{
    std::fprintf(
        stderr,
        "openweburl: %s\n"
        "usage: openweburl PAGE TEXT RELOAD-TIMEOUT-MS\n"
        "       openweburl PAGE TOKEN BASE-ADDRESS TEXT\n"
        "Shows a page of the account service for a host program, and prints what the page\n"
        "reports. TEXT is handed to the page; a language tag also chooses its language.\n",
        qPrintable(problem));
    return wrongCommandLine;
}

int show(const Start &start, const ReportPipe &reports)
{
    // Off the record: the next user of the machine finds no session of this one.
    QWebEngineProfile profile;
    if (!start.language().isEmpty())
        profile.setHttpAcceptLanguage(start.language());
    // A page that lies in a file has been fetched from somewhere: it sees no other file.
    profile.settings()->setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, false);
    PageChannel channel(start, [&](const QByteArray &report) { return reports.write(report); });
    profile.installUrlSchemeHandler(PageChannel::scheme(), &channel);

    Page page(&profile, start.reloadTimeout);
    page.begin(start.page);
    Window window(page, Texts::in(start.pageLanguage()));
    QObject::connect(&channel, &PageChannel::closeRequested, &window, &QWidget::close,
                     Qt::QueuedConnection);
    window.show();
    window.setFocus();
    return QApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    QString problem;
    const std::optional<Start> start = Start::fromArguments(argumentsOf(argc, argv), problem);
    if (!start)
        return usage(problem);

    const ReportPipe reports;
    PageChannel::registerScheme();
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    // The arguments are a host's texts: none is an option of Qt or of the browser engine.
    int programNameOnly = 1;
    const QApplication application(programNameOnly, argv);
    return show(*start, reports);
}
