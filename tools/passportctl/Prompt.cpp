#include "Prompt.h"

#include <cstdio>
#include <iostream>
#include <string>

#include <termios.h>
#include <unistd.h>

namespace {

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

std::optional<QString> readLine()
{
    std::string line;
    if (!std::getline(std::cin, line))
        return std::nullopt;
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return QString::fromStdString(line);
}

} // namespace

std::optional<QString> readSecret(const QString &question)
{
    if (isatty(STDIN_FILENO) == 0)
        return readLine();
    std::cerr << question.toStdString() << ": " << std::flush;
    const HiddenTyping hidden;
    auto secret = readLine();
    std::cerr << '\n';
    return secret;
}

std::optional<QString> readAnswer(const QString &question)
{
    if (isatty(STDIN_FILENO) != 0)
        std::cerr << question.toStdString() << ": " << std::flush;
    return readLine();
}
