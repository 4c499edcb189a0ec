// SPDX-License-Identifier: MIT
#include "Command.h"
#include "Files.h"

#include <CLI/App.hpp>

#include <string>
#include <utility>

namespace {

// Pieces of a protected text can be joined as long as none but the last needs padding: 48 bytes are
// three cipher blocks and 64 characters.
constexpr qint64 plainPiece = 48 * 128 * 1024;
constexpr qint64 textPiece = plainPiece / 48 * 64;
constexpr int blockBytes = 16;

/// Converts bytes of any length, piece by piece, through the facade's operations.
class ProtectionCommand : public Command
{
public:
    void declare(CLI::App &app) override
    {
        addFile(app, "file", m_input, "File to read; standard input without it");
        addFile(app, "-o,--output", m_output, "File to write; standard output without it");
    }
    void validate(const CLI::App &app) const override
    {
        if (app.get_parent()->count("--json") > 0 && m_output.isEmpty())
            throw CLI::ValidationError("--json", "needs --output with this command");
    }
    Exit run(Host &host) override;

protected:
    /// `permissions` of a new file; none: the usual ones.
    ProtectionCommand(const QString &done, QFileDevice::Permissions permissions)
        : m_done(done)
        , m_permissions(permissions)
    {
    }

    /// Converts everything; returns early with a failure that it has printed.
    virtual std::optional<Exit> convert(Host &host, Files &files) const = 0;

    static Exit failWriting(Host &host, Files &files)
    {
        return host.output().failure(Exit::Configuration, files.writeError());
    }

private:
    QString m_input;
    QString m_output;
    QString m_done;
    QFileDevice::Permissions m_permissions;
};

Exit ProtectionCommand::run(Host &host)
{
    Files files(m_input, m_output);
    if (!files.open(m_permissions))
        return host.output().failure(Exit::Configuration, files.problem());
    if (const auto end = convert(host, files))
        return *end;
    if (!files.commit())
        return failWriting(host, files);
    if (!files.writesNamedFile())
        return Exit::Success;
    return host.output().success(
        QStringLiteral("%1 %2").arg(m_done, m_output), {},
        {{QStringLiteral("file"), m_output}, {QStringLiteral("bytes"), files.written()}});
}

class Protect : public ProtectionCommand
{
public:
    Protect() : ProtectionCommand(QStringLiteral("Protected into"), {}) {}

private:
    std::optional<Exit> convert(Host &host, Files &files) const override;
};

std::optional<Exit> Protect::convert(Host &host, Files &files) const
{
    for (QByteArray piece; !(piece = files.read(plainPiece)).isEmpty();) {
        std::string text;
        if (!host.passport().serializeString(piece.toStdString(), text) || !files.write(text))
            return failWriting(host, files);
    }
    if (files.written() == 0)
        return host.output().failure(Exit::Usage, QStringLiteral("there is nothing to protect"));
    if (!files.writesNamedFile())
        files.write("\n");
    return std::nullopt;
}

class Unprotect : public ProtectionCommand
{
public:
    Unprotect()
        : ProtectionCommand(QStringLiteral("Unprotected into"),
                            QFileDevice::ReadOwner | QFileDevice::WriteOwner)
    {
    }
    void declare(CLI::App &app) override
    {
        ProtectionCommand::declare(app);
        addFlag(app, "--strip", m_strips,
                "Cut up to 15 zero bytes at the end, the format's and the file's own alike");
    }

private:
    std::optional<Exit> convert(Host &host, Files &files) const override;

    bool m_strips = false;
};

/// Whether `text` is base64 of whole cipher blocks. The library itself would decode up to the first
/// character outside the alphabet and say nothing.
bool isProtectedText(const QByteArray &text)
{
    const auto bytes =
        QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
    return bytes && bytes.decoded.size() % blockBytes == 0 &&
           text.size() % 4 == 0; // else its padding is missing
}

void stripPadding(std::string &bytes)
{
    const std::size_t least = bytes.size() - blockBytes + 1;
    while (bytes.size() > least && bytes.back() == '\0')
        bytes.pop_back();
}

std::optional<Exit> Unprotect::convert(Host &host, Files &files) const
{
    QByteArray next = files.read(textPiece);
    while (!next.isEmpty()) {
        QByteArray piece = std::exchange(next, files.read(textPiece));
        const bool last = next.size() <= 2 && next.trimmed().isEmpty();
        if (last) {
            next.clear();
            piece = piece.trimmed();
        }
        std::string bytes;
        if (!isProtectedText(piece) ||
            !host.passport().deserializeString(piece.toStdString(), bytes)) {
            return host.output().failure(Exit::Configuration,
                                         QStringLiteral("the input is not protected text"));
        }
        if (last && m_strips)
            stripPadding(bytes);
        if (!files.write(bytes))
            return failWriting(host, files);
    }
    return std::nullopt;
}

} // namespace

void addProtectionCommands(Commands commands)
{
    commands.add<Protect>("protect", "Protect a text or file (AES-128 and base64)",
                          "protect secret.txt -o secret.protected");
    commands.add<Unprotect>("unprotect", "Recover what was protected",
                            "unprotect --strip secret.protected -o secret.txt");
}
