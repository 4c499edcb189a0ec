// SPDX-License-Identifier: MIT
#include "Prompt.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/select.h>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr std::size_t maximumLine = 4096;

/// Keeps the terminal from showing what is typed.
class HiddenTyping
{
public:
    HiddenTyping()
    {
        m_active = tcgetattr(STDIN_FILENO, &m_before) == 0;
        termios silent = m_before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        if (m_active)
            tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    }
    ~HiddenTyping()
    {
        if (m_active)
            tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_before);
    }
    HiddenTyping(const HiddenTyping &) = delete;
    HiddenTyping &operator=(const HiddenTyping &) = delete;

private:
    termios m_before{};
    bool m_active = false;
};

/// Turns the signals that end or stop the program into bytes of a pipe while it lives. A pipe,
/// since the system may call the handler on any thread.
class SignalPipe
{
public:
    SignalPipe()
    {
        if (pipe(s_ends.data()) != 0)
            throw std::system_error(errno, std::generic_category(), "pipe");
        for (const int end : s_ends)
            fcntl(end, F_SETFD, FD_CLOEXEC);
        struct sigaction noting = {};
        noting.sa_handler = [](int signal) {
            const int error = errno;
            const auto byte = static_cast<char>(signal);
            if (write(s_ends[1], &byte, 1) < 0)
                errno = error;
        };
        for (std::size_t i = 0; i < watched.size(); ++i) {
            sigaction(watched[i], nullptr, &m_before[i]);
            if (m_before[i].sa_handler != SIG_IGN) // else as with nohup
                sigaction(watched[i], &noting, nullptr);
        }
    }
    ~SignalPipe()
    {
        for (std::size_t i = 0; i < watched.size(); ++i)
            sigaction(watched[i], &m_before[i], nullptr);
        for (const int end : s_ends)
            close(end);
    }
    SignalPipe(const SignalPipe &) = delete;
    SignalPipe &operator=(const SignalPipe &) = delete;

    /// Waits until standard input has something, or its end, or for a signal, which it returns.
    static int wait()
    {
        fd_set readable; // macOS cannot poll() terminals
        do {
            FD_ZERO(&readable);
            FD_SET(STDIN_FILENO, &readable);
            FD_SET(s_ends[0], &readable);
        } while (select(s_ends[0] + 1, &readable, nullptr, nullptr, nullptr) < 0 && errno == EINTR);
        char signal = 0;
        if (FD_ISSET(s_ends[0], &readable) && read(s_ends[0], &signal, 1) == 1)
            return signal;
        return 0;
    }

private:
    static constexpr std::array watched{SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};
    static inline std::array<int, 2> s_ends{};
    std::array<struct sigaction, watched.size()> m_before{};
};

/// What has come of a line so far.
struct Line
{
    std::string text;
    bool isThere = false; ///< as much as its end has been read
    bool isWhole = false; ///< its end has been read, or that of standard input
};

/// Reads on until the line is whole or a signal comes, which is returned.
int readOn(Line &line, bool isHidden)
{
    // In this order, so that no signal finds the terminal silent.
    const SignalPipe signals;
    const auto hidden =
        isHidden ? std::make_optional<HiddenTyping>() : std::optional<HiddenTyping>();
    while (!line.isWhole) {
        if (const int signal = SignalPipe::wait())
            return signal;
        char byte = 0;
        // One at a time: what follows the line is for whoever reads next.
        const auto count = read(STDIN_FILENO, &byte, 1);
        if (count < 0 && errno == EINTR)
            continue;
        line.isThere = line.isThere || count == 1;
        line.isWhole = count != 1 || byte == '\n';
        if (line.isWhole)
            return 0;
        if (line.text.size() == maximumLine)
            throw std::length_error("a line of standard input has more than 4096 bytes");
        line.text += byte;
    }
    return 0;
}

std::optional<QString> readLine(const QString &question, bool isSecret)
{
    const bool isTerminal = isatty(STDIN_FILENO) != 0;
    Line line;
    while (!line.isWhole) {
        if (isTerminal)
            std::fputs((question.toUtf8() + ": ").constData(), stderr);
        const int signal = readOn(line, isTerminal && isSecret);
        if (isTerminal && (isSecret || !line.isWhole))
            std::fputc('\n', stderr);
        if (signal == SIGTSTP)
            raise(SIGTSTP); // returns when the program goes on
        else if (signal != 0)
            throw Interrupted{signal};
    }
    if (!line.isThere)
        return std::nullopt;
    if (!line.text.empty() && line.text.back() == '\r')
        line.text.pop_back();
    return QString::fromStdString(line.text);
}

} // namespace

std::optional<QString> readSecret(const QString &question)
{
    return readLine(question, true);
}

std::optional<QString> readAnswer(const QString &question)
{
    return readLine(question, false);
}
