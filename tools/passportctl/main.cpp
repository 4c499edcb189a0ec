#include "CodeFlow.h"
#include "Doctor.h"
#include "Errors.h"
#include "Host.h"
#include "Output.h"
#include "Protection.h"
#include "Services.h"
#include "Web.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLoggingCategory>
#include <QtCore/QTimer>

#include <CLI/CLI.hpp>

#include <chrono>
#include <cstdio>
#include <exception>
#include <functional>
#include <string>

#include <unistd.h>

namespace {

struct Arguments
{
    bool json = false;
    bool verbose = false;
    bool showToken = false;
    bool remember = false;
    bool forget = false;
    bool strip = false;
    bool fromEmulator = false;
    bool wait = false;
    bool closes = false;
    bool showSecrets = false;
    std::string config;
    std::string environment;
    std::string address;
    std::string user;
    std::string phoneArea;
    std::string passportDir;
    std::string code;
    std::string input;
    std::string output;
    std::string purpose = "login";
    std::string language = "en-us";
    std::string filter;
    std::string oem = "velqor";
    std::string page;
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

void declareCodeFlows(CLI::App &app, Arguments &arguments, Command &chosen)
{
    const auto choose = [&](CLI::App *command, Exit (CodeFlow::*operation)()) {
        command->add_flag("--from-emulator", arguments.fromEmulator,
                          "Take captcha and code from a passport-emulator");
        command->callback([&, operation] {
            chosen = [&, operation](Host &host, const Output &) {
                CodeFlow flow(host, {text(arguments.user), text(arguments.phoneArea),
                                     text(arguments.purpose), text(arguments.output),
                                     text(arguments.language), arguments.fromEmulator,
                                     arguments.remember});
                return (flow.*operation)();
            };
        });
    };
    const auto declare = [&](const char *name, const char *description) {
        CLI::App *command = declareAccountCommand(app, arguments, name, description);
        command->add_option("-o,--output", arguments.output, "File for the captcha's picture");
        return command;
    };
    CLI::App *captcha = app.add_subcommand("captcha", "Fetch a captcha's picture");
    captcha->add_option("-o,--output", arguments.output, "File for the picture")->required();
    choose(captcha, &CodeFlow::captcha);
    CLI::App *sendCode = declare("send-code", "Have a verification code sent");
    choose(sendCode, &CodeFlow::sendCode);
    CLI::App *signIn = declare("code-sign-in", "Sign in with a verification code");
    signIn->add_flag("--remember", arguments.remember, "Write the name to the passport directory");
    choose(signIn, &CodeFlow::codeSignIn);
    CLI::App *exists = declare("exists", "Ask whether an account exists");
    choose(exists, &CodeFlow::exists);
    choose(declare("reset-password", "Set a new password with a verification code"),
           &CodeFlow::resetPassword);
    for (CLI::App *command : {captcha, sendCode, exists})
        command->add_option("--purpose", arguments.purpose, "What captcha and code are for")
            ->capture_default_str();
}

void declareServices(CLI::App &app, Arguments &arguments, Command &chosen)
{
    CLI::App *countries =
        app.add_subcommand("countries", "List countries with their calling codes");
    countries->add_option("filter", arguments.filter, "Part of a name, code or calling code");
    countries->callback([&] {
        chosen = [&](Host &host, const Output &) {
            return listCountries(host, text(arguments.filter));
        };
    });
    app.add_subcommand("country", "Show the country of this machine's address")->callback([&] {
        chosen = [](Host &host, const Output &) { return showCountry(host); };
    });
    CLI::App *privacy = app.add_subcommand("privacy", "Print the privacy policy");
    privacy->add_option("--language", arguments.language, "Such as en-us or zh-cn")
        ->capture_default_str();
    privacy->add_option("--oem", arguments.oem, "Whose policy")->capture_default_str();
    privacy->callback([&] {
        chosen = [&](Host &host, const Output &) {
            return showPrivacy(host, text(arguments.language), text(arguments.oem),
                               text(arguments.passportDir));
        };
    });
    app.add_subcommand("net", "Ask whether network and service can be reached")->callback([&] {
        chosen = [](Host &host, const Output &) { return showReachability(host); };
    });
    CLI::App *fault = app.add_subcommand("fault", "Have a passport-emulator spoil answers");
    fault->add_option("fault", arguments.filter, "JSON, as the emulator's manual describes it")
        ->required();
    fault->callback([&] {
        chosen = [&](Host &host, const Output &) { return addFault(host, text(arguments.filter)); };
    });
    CLI::App *inbox = app.add_subcommand("inbox", "Show the codes that a passport-emulator sent");
    inbox->add_flag("--wait", arguments.wait, "Wait for the next one");
    inbox->callback([&] {
        chosen = [&](Host &host, const Output &) { return showInbox(host, arguments.wait); };
    });
}

void declareWeb(CLI::App &app, Arguments &arguments, Command &chosen)
{
    CLI::App *web = app.add_subcommand("web", "Show a page of the account service");
    web->require_subcommand(1);
    const auto declare = [&](CLI::App *command, const char *path, auto operation) {
        if (path[0] != '\0')
            command->add_option("--page", arguments.page, "Path below the web service's address");
        command->add_option("--text", arguments.language, "For the page, usually a language")
            ->capture_default_str();
        command->callback([&, path, operation] {
            chosen = [&, path, operation](Host &host, const Output &) {
                const std::string page = arguments.page.empty() ? path : arguments.page;
                Web shown(host, {text(page), text(arguments.language), arguments.closes,
                                 arguments.showSecrets});
                return std::invoke(operation, shown);
            };
        });
        return command;
    };
    const auto add = [&](const char *name, const char *description) {
        return web->add_subcommand(name, description);
    };
    CLI::App *signIn = declare(add("sign-in", "Sign in"), "/sign-in", &Web::signIn);
    CLI::App *signUp = declare(add("sign-up", "Create an account"), "/sign-up", &Web::signUp);
    CLI::App *forgotten =
        declare(add("forgotten", "Set a new password"), "/forgotten-password", &Web::forgotten);
    CLI::App *addInfo =
        declare(declareAccountCommand(*web, arguments, "add-info", "Complete an account"),
                "/add-information", [&](Web &shown) {
                    return shown.addInformation(text(arguments.user), text(arguments.phoneArea));
                });
    declare(add("open", "Show any page"), "", &Web::open)
        ->add_option("url", arguments.page, "Its address: http, https or file")
        ->required();
    for (CLI::App *command : {signUp, forgotten, addInfo})
        command->add_flag("--close", arguments.closes, "Close the page after its result");
    for (CLI::App *command : {signIn, signUp, forgotten}) {
        command->add_flag("--show-secrets", arguments.showSecrets,
                          "Print tokens and passwords too");
    }
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

int run(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);

    Arguments arguments;
    Command chosen;
    CLI::App app("Account services from the command line", "passportctl");
    declareGlobal(app, arguments);
    declareCommands(app, arguments, chosen);
    declareCodeFlows(app, arguments, chosen);
    declareServices(app, arguments, chosen);
    declareWeb(app, arguments, chosen);
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
    // The library delivers events while it waits: whoever sits before a terminal sees that it does.
    constexpr auto patience = std::chrono::seconds(2);
    QTimer waiting;
    QObject::connect(&waiting, &QTimer::timeout,
                     [] { std::fputs("passportctl: still waiting\n", stderr); });
    if (isatty(STDERR_FILENO) != 0)
        waiting.start(patience);

    const Output output(arguments.json);
    Host host({text(arguments.config), text(arguments.environment), text(arguments.address),
               text(arguments.passportDir)},
              output);
    return static_cast<int>(chosen(host, output));
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "passportctl: %s\n", error.what());
        return static_cast<int>(Exit::Configuration);
    }
}
