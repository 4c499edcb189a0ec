#include "Doctor.h"
#include "Errors.h"
#include "Host.h"
#include "Output.h"
#include "Protection.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLoggingCategory>

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace {

struct Arguments
{
    bool json = false;
    bool verbose = false;
    bool showToken = false;
    bool remember = false;
    bool forget = false;
    bool strip = false;
    std::string config;
    std::string environment;
    std::string address;
    std::string user;
    std::string phoneArea;
    std::string passportDir;
    std::string code;
    std::string input;
    std::string output;
};

using Command = std::function<Exit(Host &, const Output &)>;

QString text(const std::string &argument)
{
    return QString::fromStdString(argument);
}

void declareGlobal(CLI::App &app, Arguments &arguments)
{
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag("--version", "passportctl " PASSPORT_VERSION);
    app.footer("Passwords are asked for, or read from standard input; no option takes one.\n"
               "Exit codes: 0 done, 1 the service said no, 2 wrong command line,\n"
               "            3 the service cannot be reached, 4 a configuration cannot be used.");
    app.add_flag("--json", arguments.json, "Print one JSON object on one line");
    app.add_flag("-v,--verbose", arguments.verbose, "Say on standard error why a request failed");
    app.add_option("--config", arguments.config, "Cloud configuration file (JSON)");
    app.add_option("--environment", arguments.environment, "Name of the cloud environment");
    app.add_option("--passport-dir", arguments.passportDir, "Passport directory of the host");
    app.add_option("--cloud", arguments.address, "Address of the account service");
}

CLI::App *declareAccountCommand(CLI::App &app, Arguments &arguments, const std::string &name,
                                const std::string &description)
{
    CLI::App *command = app.add_subcommand(name, description);
    command->add_option("user", arguments.user, "User name, mail address or phone number")
        ->required();
    command->add_option("--phone-area", arguments.phoneArea,
                        "Phone area of the user name, such as 86");
    return command;
}

void declareCommands(CLI::App &app, Arguments &arguments, Command &chosen)
{
    CLI::App *signIn = declareAccountCommand(app, arguments, "sign-in", "Sign in with a password");
    signIn->add_flag("--show-token", arguments.showToken, "Print the session token too");
    signIn->add_flag(
        "--remember", arguments.remember,
        "Write name and password to the passport directory, as the library does for hosts");
    signIn->callback([&] {
        chosen = [&](Host &host, const Output &) {
            return host.signIn(text(arguments.user), text(arguments.phoneArea), arguments.showToken,
                               arguments.remember);
        };
    });
    declareAccountCommand(app, arguments, "profile", "Sign in and print the account's profile")
        ->callback([&] {
            chosen = [&](Host &host, const Output &) {
                return host.profile(text(arguments.user), text(arguments.phoneArea));
            };
        });
    CLI::App *account = app.add_subcommand("account", "Show the remembered account");
    account->add_flag("--forget", arguments.forget, "Remove it");
    account->callback([&] {
        chosen = [&](Host &host, const Output &) { return host.account(arguments.forget); };
    });
    CLI::App *errors = app.add_subcommand("errors", "Explain an error code");
    errors->add_option("code", arguments.code, "32-bit number, decimal or 0x...")->required();
    errors->callback([&] {
        chosen = [&](Host &, const Output &output) {
            return explain(text(arguments.code), output);
        };
    });
    app.add_subcommand("status", "Ask the account service whether it is there")->callback([&] {
        chosen = [](Host &host, const Output &) { return host.status(); };
    });
    app.add_subcommand("config", "Check and print the cloud configuration")->callback([&] {
        chosen = [](Host &host, const Output &) { return host.config(); };
    });
    app.add_subcommand("doctor", "Look at everything that a sign-in needs")->callback([&] {
        chosen = [](Host &host, const Output &output) { return examine(host, output); };
    });
}

void declareProtection(CLI::App &app, Arguments &arguments, Command &chosen)
{
    const auto declare = [&](const char *name, const char *description, auto operation) {
        CLI::App *command = app.add_subcommand(name, description);
        command->add_option("file", arguments.input, "File to read; standard input without it");
        command->add_option("-o,--output", arguments.output,
                            "File to write; standard output without it");
        command->callback([&, operation] {
            if (arguments.json && arguments.output.empty())
                throw CLI::ValidationError("--json", "needs --output with this command");
            chosen = [&, operation](Host &, const Output &output) {
                return operation({text(arguments.input), text(arguments.output), arguments.strip},
                                 output);
            };
        });
        return command;
    };
    declare("protect", "Protect a text or file (AES-128 and base64)", &protect);
    declare("unprotect", "Recover what was protected", &unprotect)
        ->add_flag("--strip", arguments.strip,
                   "Cut the zero bytes that the format adds at the end");
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);

    Arguments arguments;
    Command chosen;
    CLI::App app("Account services from the command line", "passportctl");
    declareGlobal(app, arguments);
    declareCommands(app, arguments, chosen);
    declareProtection(app, arguments, chosen);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : static_cast<int>(Exit::Usage);
    }

    // The library's own lines carry tokens, so they stay off whatever is asked for.
    QLoggingCategory::setFilterRules(
        QStringLiteral("velqor.passport.lib=false\nnubelo=%1")
            .arg(arguments.verbose ? QStringLiteral("true") : QStringLiteral("false")));
    const Output output(arguments.json);
    Host host({text(arguments.config), text(arguments.environment), text(arguments.address),
               text(arguments.passportDir)},
              output);
    return static_cast<int>(chosen(host, output));
}
