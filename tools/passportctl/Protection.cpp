#include "Protection.h"

#include <passport/Passport.h>

#include <QtCore/QFile>
#include <QtCore/QSaveFile>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>

#include <unistd.h>

using namespace VelqorPassPort;

namespace {

// Pieces of a protected text can be joined as long as none but the last needs padding: 48 bytes are
// three cipher blocks and 64 characters.
constexpr qint64 plainPiece = 48 * 128 * 1024;
constexpr qint64 textPiece = plainPiece / 48 * 64;
constexpr std::size_t blockBytes = 16;

/// A bar on standard error, for large files and only on a terminal.
class Progress
{
public:
    explicit Progress(qint64 total) : m_total(total)
    {
        constexpr qint64 large = 32 * 1024 * 1024;
        m_shown = total >= large && isatty(STDERR_FILENO) != 0;
    }
    ~Progress()
    {
        if (m_shown)
            std::fputs("\r\033[K", stderr);
    }
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    void add(qint64 bytes)
    {
        constexpr int width = 40;
        m_done += bytes;
        if (!m_shown)
            return;
        const int filled = static_cast<int>(width * m_done / m_total);
        std::fprintf(stderr, "\r[%-*s] %3lld%%", width,
                     std::string(static_cast<std::size_t>(filled), '#').c_str(),
                     static_cast<long long>(100 * m_done / m_total));
    }

private:
    qint64 m_total;
    qint64 m_done = 0;
    bool m_shown = false;
};

/// Both ends of the work, opened; `problem` says which end could not be.
struct Ends
{
    Ends(const ProtectionOptions &options, bool secret)
    {
        if (options.input.isEmpty()) {
            in = std::make_unique<QFile>();
            static_cast<QFile *>(in.get())->open(stdin, QIODevice::ReadOnly);
        } else {
            in = std::make_unique<QFile>(options.input);
            if (!in->open(QIODevice::ReadOnly))
                problem = QStringLiteral("%1: %2").arg(options.input, in->errorString());
        }
        if (!problem.isEmpty())
            return;
        if (options.output.isEmpty()) {
            out = std::make_unique<QFile>();
            static_cast<QFile *>(out.get())->open(stdout, QIODevice::WriteOnly);
            return;
        }
        auto file = std::make_unique<QSaveFile>(options.output);
        if (!file->open(QIODevice::WriteOnly))
            problem = QStringLiteral("%1: %2").arg(options.output, file->errorString());
        else if (secret)
            file->setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        saved = file.get();
        out = std::move(file);
    }

    bool write(const std::string &bytes)
    {
        const auto size = static_cast<qint64>(bytes.size());
        written += size;
        return out->write(bytes.data(), size) == size;
    }
    bool commit() { return saved ? saved->commit() : static_cast<QFile *>(out.get())->flush(); }

    std::unique_ptr<QIODevice> in;
    std::unique_ptr<QIODevice> out;
    QSaveFile *saved = nullptr; // `out`, when it is a named file
    qint64 written = 0;
    QString problem;
};

QByteArray readPiece(QIODevice &in, qint64 size)
{
    // A pipe gives what it has; pieces must be whole.
    QByteArray piece = in.read(size);
    while (!piece.isEmpty() && piece.size() < size) {
        const QByteArray more = in.read(size - piece.size());
        if (more.isEmpty())
            break;
        piece += more;
    }
    return piece;
}

Exit finish(Ends &ends, const ProtectionOptions &options, const Output &output, const QString &done)
{
    if (!ends.commit())
        return output.failure(
            Exit::Configuration,
            QStringLiteral("cannot write %1: %2").arg(options.output, ends.out->errorString()));
    if (options.output.isEmpty())
        return Exit::Success;
    return output.success(
        QStringLiteral("%1 %2").arg(done, options.output), {},
        {{QStringLiteral("file"), options.output}, {QStringLiteral("bytes"), ends.written}});
}

bool isAlphabet(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
           c == '/';
}

/// Whether `text` is base64 of whole cipher blocks. The library itself would decode up to the first
/// character outside the alphabet and say nothing.
bool isProtectedText(const QByteArray &text)
{
    int end = text.size();
    while (end > 0 && text[end - 1] == '=' && text.size() - end < 2)
        --end;
    const int bytes = text.size() / 4 * 3 - (text.size() - end);
    return text.size() % 4 == 0 && bytes % static_cast<int>(blockBytes) == 0 &&
           std::all_of(text.begin(), text.begin() + end, isAlphabet);
}

} // namespace

Exit protect(const ProtectionOptions &options, const Output &output)
{
    Ends ends(options, false);
    if (!ends.problem.isEmpty())
        return output.failure(Exit::Configuration, ends.problem);
    Passport passport;
    Progress progress(ends.in->size());
    for (QByteArray piece; !(piece = readPiece(*ends.in, plainPiece)).isEmpty();) {
        std::string text;
        if (!passport.serializeString(piece.toStdString(), text) || !ends.write(text))
            return output.failure(Exit::Configuration,
                                  QStringLiteral("cannot write: ") + ends.out->errorString());
        progress.add(piece.size());
    }
    if (ends.written == 0)
        return output.failure(Exit::Usage, QStringLiteral("there is nothing to protect"));
    if (options.output.isEmpty())
        ends.write("\n");
    return finish(ends, options, output, QStringLiteral("Protected into"));
}

Exit unprotect(const ProtectionOptions &options, const Output &output)
{
    Ends ends(options, true);
    if (!ends.problem.isEmpty())
        return output.failure(Exit::Configuration, ends.problem);
    Passport passport;
    Progress progress(ends.in->size());
    QByteArray next = readPiece(*ends.in, textPiece);
    while (!next.isEmpty()) {
        QByteArray piece = std::exchange(next, readPiece(*ends.in, textPiece));
        const qint64 read = piece.size();
        const bool last = next.size() <= 2 && next.trimmed().isEmpty();
        if (last) {
            next.clear();
            piece = piece.trimmed();
        }
        std::string bytes;
        if (!isProtectedText(piece) || !passport.deserializeString(piece.toStdString(), bytes))
            return output.failure(Exit::Configuration,
                                  QStringLiteral("the input is not protected text"));
        if (last && options.strip) {
            const std::size_t least = bytes.size() - blockBytes + 1;
            while (bytes.size() > least && bytes.back() == '\0')
                bytes.pop_back();
        }
        if (!ends.write(bytes))
            return output.failure(Exit::Configuration,
                                  QStringLiteral("cannot write: ") + ends.out->errorString());
        progress.add(read);
    }
    return finish(ends, options, output, QStringLiteral("Unprotected into"));
}
